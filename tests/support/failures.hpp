#pragma once

#include <sys/resource.h>
#include <unistd.h>

#include <csignal>
#include <cstdlib>
#include <optional>

#include "base/stop.hpp"

namespace torvex::test {

// The stop that a call ends with, if it does.
template <class Call>
std::optional<Stop> stop_of(Call call) {
    try {
        call();
    } catch (const Stop& s) {
        return s;
    }
    return std::nullopt;
}

// Its code, 0 without a stop.
template <class Call>
int stop_code_of(Call call) {
    const std::optional<Stop> s = stop_of(call);
    return s ? s->code() : 0;
}

// While it lives, writing beyond so many bytes of any file fails, as on a full disk.
class FileSizeLimit {
 public:
    explicit FileSizeLimit(rlim_t bytes) {
        handler_ = std::signal(SIGXFSZ, SIG_IGN);
        getrlimit(RLIMIT_FSIZE, &before_);
        rlimit limit = before_;
        limit.rlim_cur = bytes;
        setrlimit(RLIMIT_FSIZE, &limit);
    }
    ~FileSizeLimit() {
        setrlimit(RLIMIT_FSIZE, &before_);
        std::signal(SIGXFSZ, handler_);
    }
    FileSizeLimit(const FileSizeLimit&) = delete;
    FileSizeLimit& operator=(const FileSizeLimit&) = delete;

 private:
    rlimit before_{};
    void (*handler_)(int) = SIG_DFL;
};

// While it lives, the process may not do what only the administrator may.
class OrdinaryUser {
 public:
    OrdinaryUser() : user_(geteuid()) {
        if (user_ == 0 && seteuid(65534) != 0) {
            user_ = 65534;  // not allowed to change: nothing to restore either
        }
    }
    ~OrdinaryUser() {
        if (user_ == 0 && seteuid(0) != 0) {
            std::abort();
        }
    }
    OrdinaryUser(const OrdinaryUser&) = delete;
    OrdinaryUser& operator=(const OrdinaryUser&) = delete;

    bool is_ordinary() const { return geteuid() != 0; }

 private:
    uid_t user_;
};

}  // namespace torvex::test
