#pragma once

#include <fcntl.h>
#include <poll.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include <array>
#include <cstdlib>
#include <stdexcept>
#include <string>

namespace torvex::test {

// A terminal of a test's own: what is written to its slave is read back as a screen would get it.
class Terminal {
 public:
    // False where the system has no pseudo-terminals to give; a test that needs one is skipped
    // then.
    static bool can_be_had() {
        const int master = posix_openpt(O_RDWR | O_NOCTTY);
        const bool had = master >= 0 && grantpt(master) == 0 && unlockpt(master) == 0;
        ::close(master);
        return had;
    }

    explicit Terminal(unsigned short columns = 200) : master_(posix_openpt(O_RDWR | O_NOCTTY)) {
        if (master_ < 0 || grantpt(master_) != 0 || unlockpt(master_) != 0) {
            throw std::runtime_error("no terminal");
        }
        slave_ = ::open(ptsname(master_), O_RDWR | O_NOCTTY);
        const winsize size{.ws_row = 24, .ws_col = columns, .ws_xpixel = 0, .ws_ypixel = 0};
        ioctl(slave_, TIOCSWINSZ, &size);
    }
    ~Terminal() {
        ::close(slave_);
        ::close(master_);
    }
    Terminal(const Terminal&) = delete;
    Terminal& operator=(const Terminal&) = delete;

    int slave() const { return slave_; }
    std::string name() const { return ptsname(master_); }

    // What has arrived so far.
    std::string read() {
        pollfd ready{master_, POLLIN, 0};
        std::array<char, 4096> bytes{};
        while (poll(&ready, 1, 20) > 0 && (ready.revents & POLLIN) != 0) {
            const ssize_t n = ::read(master_, bytes.data(), bytes.size());
            if (n <= 0) {
                break;
            }
            seen_.append(bytes.data(), static_cast<std::size_t>(n));
        }
        return seen_;
    }

 private:
    int master_;
    int slave_ = -1;
    std::string seen_;
};

}  // namespace torvex::test
