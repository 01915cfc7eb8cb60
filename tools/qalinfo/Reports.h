// The three ways in which qalinfo tells what is in a package. All write UTF-8.
#pragma once

#include <cstdint>
#include <cstdio>
#include <string>
#include <vector>

#include "firmware/QALclass.h"
#include "firmware/QalLint.h"

namespace tarnwick::qalinfo {

/// The package's file as it is shown: its path, which bytes outside UTF-8 make a Windows-1252 text.
std::string ShownPath(const QALclass& package);

/// For people: a paragraph with the header, the devices, the first error and the remarks.
void WriteText(std::FILE* out, const QALclass& package, const std::vector<QalRemark>& remarks);

/// For programs: one JSON object on a line of its own.
void WriteJson(std::FILE* out, const QALclass& package, const std::vector<QalRemark>& remarks);

/// The image of device `device` as Intel HEX. Only for a package without errors.
void WriteImage(std::FILE* out, const QALclass& package, std::int32_t device);

}  // namespace tarnwick::qalinfo
