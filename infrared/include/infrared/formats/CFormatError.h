// Why a file read by the IR library is refused: the file, the line (1-based; 0 when the file as
// a whole is at fault) and the reason. what() is "file:line: reason".
#pragma once

#include <cstddef>
#include <stdexcept>
#include <string>

namespace infrared {

class CFormatError : public std::runtime_error {
public:
    CFormatError(const std::string& file, std::size_t line, const std::string& reason)
        : std::runtime_error(file + ":" + std::to_string(line) + ": " + reason), file_(file), line_(line),
          reason_(reason) {}

    const std::string& File() const { return file_; }
    std::size_t Line() const { return line_; }
    const std::string& Reason() const { return reason_; }

private:
    std::string file_;
    std::size_t line_;
    std::string reason_;
};

// Reads a whole file for a parser; throws CFormatError (line 0) when it cannot be read or is
// larger than `maxBytes`, before reading it all.
std::string ReadFormatFile(const std::string& path, std::size_t maxBytes);

}  // namespace infrared
