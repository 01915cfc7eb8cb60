#include "platform/serial.h"

namespace tarnwick::serial {

bool Adapter::SameAs(const Adapter& other) const {
  if (product != other.product || port != other.port) return false;
  return serial.empty() ? place == other.place : serial == other.serial;
}

}  // namespace tarnwick::serial
