// Swaps std::clog's buffer for a string buffer while it lives.
#ifndef OVO_TESTS_SUPPORT_CLOG_CAPTURE_H
#define OVO_TESTS_SUPPORT_CLOG_CAPTURE_H

#include <iostream>
#include <sstream>
#include <string>

namespace ovo_test {

class ClogCapture {
public:
    ClogCapture() : saved_(std::clog.rdbuf(buffer_.rdbuf())) {}
    ~ClogCapture() { std::clog.rdbuf(saved_); }
    ClogCapture(const ClogCapture&) = delete;
    ClogCapture& operator=(const ClogCapture&) = delete;

    std::string text() const { return buffer_.str(); }

private:
    std::ostringstream buffer_;
    std::streambuf* saved_;
};

} // namespace ovo_test

#endif
