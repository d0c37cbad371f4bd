#pragma once

#include <cstddef>
#include <ostream>
#include <string>
#include <string_view>
#include <utility>

namespace Lodex {

/// A text that is read, never changed: UTF-8, owned. Null and empty are the same.
class CString {
public:
    CString() = default;
    CString(const char* text) : text_(text ? text : "") {}
    CString(std::string text) : text_(std::move(text)) {}
    CString(std::string_view text) : text_(text) {}

    [[nodiscard]] const char* c_str() const { return text_.c_str(); }
    [[nodiscard]] const std::string& str() const { return text_; }
    [[nodiscard]] bool empty() const { return text_.empty(); }
    /// Number of bytes, without the terminating NUL.
    [[nodiscard]] std::size_t length() const { return text_.size(); }

    operator std::string_view() const { return text_; }
    friend bool operator==(const CString& a, const CString& b) { return a.text_ == b.text_; }
    friend auto operator<=>(const CString& a, const CString& b) { return a.text_ <=> b.text_; }
    friend std::ostream& operator<<(std::ostream& out, const CString& text) { return out << text.text_; }

protected:
    std::string text_;
};

/// A text that its holder may change in place.
class CopyCString : public CString {
public:
    using CString::CString;
    CopyCString() = default;
    CopyCString(const CString& text) : CString(text) {}

    /// Number of stored characters, the terminating NUL included; 0 for an empty text.
    [[nodiscard]] std::size_t size() const { return text_.empty() ? 0 : text_.size() + 1; }
    /// The i-th stored character, 0 <= i < length(); writable.
    [[nodiscard]] char& operator[](std::size_t i) { return text_[i]; }
    [[nodiscard]] char operator[](std::size_t i) const { return text_[i]; }
};

} // namespace Lodex
