// Why a request had no content, in words for the record.
#pragma once

#include <cstdint>
#include <string>

#include "platform/http.h"

namespace tarnwick {

/// The kind of the failure and what the transport says of it: "too slow: nothing came for too long".
std::string CauseText(const http::Cause& cause);

/// What the status of an answer without content says: "not found: status 404".
std::string CauseText(std::int32_t status);

}  // namespace tarnwick
