#pragma once

#include <string>
#include <string_view>

namespace torvex {

// A text file that grows line by line, each line reaching the file before the next step of the run.
// A failure to open or write is a stop that names the file.
class TextLog {
 public:
    enum class Existing { append, discard };

    TextLog() = default;
    ~TextLog();
    TextLog(const TextLog&) = delete;
    TextLog& operator=(const TextLog&) = delete;

    void open(const std::string& path, Existing existing);
    void close();
    bool is_open() const { return descriptor_ >= 0; }

    void write(std::string_view text);
    void line(std::string_view text);

 private:
    int descriptor_ = -1;
    std::string path_;
};

}  // namespace torvex
