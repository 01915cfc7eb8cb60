// A run in the record: one part of it, from which a stranger can say what was done to which motor with which
// package and how it ended.
#pragma once

#include <chrono>
#include <cstdint>
#include <string>
#include <vector>

#include "platform/record.h"

namespace tarnwick {

/// Writes the begin of a run when it comes into being and its end when it goes: program, port, package and
/// devices before; devices, port and duration after. In between whatever else the record gets belongs to it.
class RunRecord {
 public:
  /// `work` is what is done, as "programming". `rows` are the rows of `gDevices` that it is done to; the
  /// package is the one in `gQAL`.
  RunRecord(std::string work, std::vector<std::int32_t> rows);
  ~RunRecord();
  RunRecord(const RunRecord&) = delete;
  RunRecord& operator=(const RunRecord&) = delete;

 private:
  const record::Part mPart;
  const std::string mWork;
  const std::vector<std::int32_t> mRows;
  const std::chrono::steady_clock::time_point mBegin = std::chrono::steady_clock::now();
};

}  // namespace tarnwick
