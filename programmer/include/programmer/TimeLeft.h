// How long a run will still take, from what it has measured of itself so far.
#pragma once

#include <chrono>
#include <cstdint>
#include <string>

namespace tarnwick {

class TimeLeft {
 public:
  /// Image `number`, from 1, of `count` begins: of motors that are written or compared one after the other.
  void Begin(std::int32_t number, std::int32_t count);
  /// Of the image under way so much is done, from 0 to 1; less than before is an image begun anew.
  void Reached(double share);
  /// "Motor 1 of 2, about 20 s left"; without a time until enough is done to tell, and without a number where
  /// there is one motor. Images still to come are taken to last as long as this one.
  std::string Text() const;

 private:
  std::int32_t mNumber = 1;
  std::int32_t mCount = 1;
  double mShare = 0;
  std::chrono::milliseconds mBegin{};
};

}  // namespace tarnwick
