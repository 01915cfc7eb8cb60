// Which serial ports the system has, and what it knows of them.
#include "platform/serial.h"
#include "win32.h"

#include <setupapi.h>  // needs what stands above

#include <array>
#include <vector>

namespace tarnwick::serial {
namespace {

namespace fs = std::filesystem;

/// The class of all devices that are serial ports: {4D36E978-E325-11CE-BFC1-08002BE10318}.
constexpr GUID kPorts{0x4D36E978, 0xE325, 0x11CE, {0xBF, 0xC1, 0x08, 0x00, 0x2B, 0xE1, 0x03, 0x18}};

/// One port that is there, as the system lists it.
struct Listed {
  std::wstring port;      ///< "COM5".
  std::wstring instance;  ///< "USB\VID_0403&PID_6001\A1B2C3D4", or below another bus.
  std::string product;
};

/// "COM5" of the path of a device.
std::wstring NameOf(const fs::path& device) {
  return device.filename().native();
}

std::wstring PortNameOf(HDEVINFO set, SP_DEVINFO_DATA& device) {
  const HKEY key = ::SetupDiOpenDevRegKey(set, &device, DICS_FLAG_GLOBAL, 0, DIREG_DEV, KEY_READ);
  if (key == INVALID_HANDLE_VALUE) return {};
  std::array<wchar_t, 32> name{};
  DWORD size = sizeof name;
  const bool told =
      ::RegGetValueW(key, nullptr, L"PortName", RRF_RT_REG_SZ, nullptr, name.data(), &size) == ERROR_SUCCESS;
  ::RegCloseKey(key);
  return told ? name.data() : std::wstring();
}

std::vector<Listed> ListPorts() {
  std::vector<Listed> ports;
  const HDEVINFO set = ::SetupDiGetClassDevsW(&kPorts, nullptr, nullptr, DIGCF_PRESENT);
  if (set == INVALID_HANDLE_VALUE) return ports;
  SP_DEVINFO_DATA device{};
  device.cbSize = sizeof device;
  for (DWORD i = 0; ::SetupDiEnumDeviceInfo(set, i, &device) != 0; ++i) {
    std::array<wchar_t, 512> text{};
    const auto size = static_cast<DWORD>(text.size());
    Listed port{.port = PortNameOf(set, device), .instance = {}, .product = {}};
    if (::SetupDiGetDeviceInstanceIdW(set, &device, text.data(), size, nullptr) != 0) port.instance = text.data();
    text.fill(L'\0');
    if (::SetupDiGetDeviceRegistryPropertyW(set, &device, SPDRP_DEVICEDESC, nullptr,
                                            reinterpret_cast<BYTE*>(text.data()), sizeof text - sizeof(wchar_t),
                                            nullptr) != 0)
      port.product = win32::ToUtf8(text.data());
    ports.push_back(port);
  }
  ::SetupDiDestroyDeviceInfoList(set);
  return ports;
}

std::optional<Listed> Find(const fs::path& device) {
  const std::wstring name = NameOf(device);
  for (const Listed& port : ListPorts())
    if (::_wcsicmp(port.port.c_str(), name.c_str()) == 0) return port;
  return std::nullopt;
}

/// "BUS\PRODUCT\INSTANCE", taken apart. An instance that the system made up for want of a serial number has an "&"
/// in it, and tells the place.
std::optional<Adapter> AdapterOf(const Listed& port) {
  const std::size_t first = port.instance.find(L'\\');
  const std::size_t last = port.instance.rfind(L'\\');
  if (first == std::wstring::npos || first == last) return std::nullopt;
  const std::wstring bus = port.instance.substr(0, first);
  if (bus != L"USB" && bus != L"FTDIBUS") return std::nullopt;
  const std::string instance = win32::ToUtf8(port.instance.substr(last + 1));
  const std::string product = win32::ToUtf8(port.instance.substr(first + 1, last - first - 1));
  const bool made = instance.find('&') != std::string::npos;
  return Adapter{.product = product + " " + port.product, .port = {}, .serial = made ? "" : instance, .place = instance};
}

}  // namespace

std::optional<Adapter> AdapterOf(const fs::path& device, const System&) {
  const std::optional<Listed> port = Find(device);
  return port ? AdapterOf(*port) : std::nullopt;
}

fs::path FindAdapter(const Adapter& adapter, const System&) {
  std::vector<std::wstring> found;
  for (const Listed& port : ListPorts())
    if (const auto other = AdapterOf(port); other && adapter.SameAs(*other)) found.push_back(port.port);
  return found.size() == 1 ? fs::path(found.front()) : fs::path();
}

fs::path StandardDevice(int number) {
  return "COM" + std::to_string(number);
}

/// The system knows a configuration for each port that it has, and for nothing else.
bool IsPort(const fs::path& device) {
  const std::string name = win32::ToUtf8(NameOf(device));
  COMMCONFIG config{};
  static_assert(sizeof config == 52);
  DWORD size = sizeof config;
  return ::GetDefaultCommConfigA(name.c_str(), &config, &size) != 0;
}

std::string ProductOf(const fs::path& device) {
  const std::optional<Listed> port = Find(device);
  return port ? port->product : std::string();
}

bool IsUsb(const fs::path& device) {
  return AdapterOf(device, System{}).has_value();
}

/// The system tells no program which other one has a port open.
std::string HolderOf(const fs::path&) {
  return {};
}

/// Each user may open each port.
Access AccessTo(const fs::path&) {
  return {};
}

}  // namespace tarnwick::serial
