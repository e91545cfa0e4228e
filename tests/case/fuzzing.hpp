#pragma once

#include <functional>
#include <string>

namespace torvex::test {

// How an input was received.
struct Reception {
    bool accepted = false;
    std::string message;    // of the stop
    std::string complaint;  // what is wrong with that, blank if nothing is
};

// Hands an input to a reader, which must take it or end in a stop with a code and a message that
// names the file, within ten seconds. An input that does not is left in the file of
// keep_failing_input(), also where a sanitizer ends the program or the time is over.
Reception received(const std::string& input, const std::function<void(const std::string&)>& read,
                   const std::function<bool(const std::string&)>& names_file);

// Names the file, once at the start; it is given with its path where the directory changes later.
void keep_failing_input(const std::string& path);

}  // namespace torvex::test
