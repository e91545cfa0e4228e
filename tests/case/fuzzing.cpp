#include "case/fuzzing.hpp"

#include <fcntl.h>
#include <sanitizer/common_interface_defs.h>
#include <unistd.h>

#include <csignal>
#include <exception>

#include "base/stop.hpp"

namespace torvex::test {

namespace {

constexpr unsigned longest_seconds = 10;

std::string saved_as;
const std::string* being_read = nullptr;  // the input, for whoever has to save it

void save_input() {
    if (being_read == nullptr) {
        return;
    }
    const int file = ::open(saved_as.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0644);
    if (file >= 0) {
        const ssize_t written = ::write(file, being_read->data(), being_read->size());
        static_cast<void>(written);
        ::close(file);
    }
}

void hung(int /*signal*/) {
    constexpr char text[] = "an input took too long; it has been saved\n";
    const ssize_t written = ::write(STDERR_FILENO, text, sizeof text - 1);
    static_cast<void>(written);
    save_input();
    _exit(1);
}

// What is wrong with a stop, blank if nothing is.
std::string complaint_of(const Stop& stopped,
                         const std::function<bool(const std::string&)>& names_file) {
    if (stopped.code() < 1 || stopped.reason().empty()) {
        return "a stop without code or reason";
    }
    if (!names_file(stopped.what())) {
        return std::string("a message that names no file: ") + stopped.what();
    }
    return {};
}

}  // namespace

void keep_failing_input(const std::string& path) {
    saved_as = path;
    std::signal(SIGALRM, hung);
    __sanitizer_set_death_callback(save_input);
}

Reception received(const std::string& input, const std::function<void(const std::string&)>& read,
                   const std::function<bool(const std::string&)>& names_file) {
    Reception reception;
    being_read = &input;
    alarm(longest_seconds);
    try {
        read(input);
        reception.accepted = true;
    } catch (const Stop& stopped) {
        reception.message = stopped.what();
        reception.complaint = complaint_of(stopped, names_file);
    } catch (const std::exception& failure) {
        reception.complaint = std::string("an exception that is no stop: ") + failure.what();
    }
    alarm(0);
    if (!reception.complaint.empty()) {
        save_input();
    }
    being_read = nullptr;
    return reception;
}

}  // namespace torvex::test
