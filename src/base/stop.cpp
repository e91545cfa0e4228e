#include "base/stop.hpp"

#include <utility>

namespace torvex {

namespace {

std::string message_of(int code, const std::string& reason, const std::string& where,
                       const std::string& fix) {
    std::string message;
    if (code > 1) {
        message = "stop " + std::to_string(code) + ": ";
    }
    message += reason;
    if (!where.empty()) {
        message += "\n  in " + where;
    }
    if (!fix.empty()) {
        message += "\n  " + fix;
    }
    return message;
}

}  // namespace

Stop::Stop(int code, std::string what, std::string where, std::string fix)
    : code_(code),
      reason_(std::move(what)),
      where_(std::move(where)),
      fix_(std::move(fix)),
      message_(message_of(code_, reason_, where_, fix_)) {}

void stop(int code, std::string_view what, std::string_view where, std::string_view fix) {
    throw Stop(code, std::string(what), std::string(where), std::string(fix));
}

}  // namespace torvex
