// A small HTTP/1.0 GET for the update check, with a time limit so a server
// that is down or silent never hangs the program.
#pragma once

#include <optional>
#include <string>

namespace zentol::http {

// The body of a 200 answer from an http:// URL, at most 64 KiB; nullopt on
// any failure, redirect or time-out.
std::optional<std::string> get(const std::string& url, int timeout_ms);

}  // namespace zentol::http
