#pragma once

#include <Lodex/utils/CString.h>

#include <string>
#include <vector>

namespace Lodex {

/// A message with the places %1 to %9, filled by arg() in order. Arguments are put in once, at the end, so that an
/// argument that holds %1 itself stays as it is. A place without an argument stays in the text.
class Format {
public:
    Format(const CString& text) : text_(text) {}
    Format(const char* text) : text_(text) {}

    /// The same with the text translated to the user's language (the text itself when there is no translation).
    [[nodiscard]] static Format tr(const CString& text);

    Format& arg(const CString& value);
    Format& arg(const char* value) { return arg(CString(value)); }
    Format& arg(long value);
    Format& arg(int value) { return arg(static_cast<long>(value)); }
    /// Six significant digits, C locale.
    Format& arg(double value);

    /// The finished message.
    [[nodiscard]] CString text() const;

    /// Sets the function that tr() asks; an empty function switches translation off.
    using Translator = std::string (*)(const std::string& text);
    static void set_translator(Translator translator);

private:
    CString text_;
    std::vector<std::string> args_;
};

/// Fills the next place of the message; a null pointer fills it with nothing.
void format_arg(Format& format, const CString& value);
void format_arg(Format& format, long value);
void format_arg(Format& format, const CString* value);

} // namespace Lodex
