#include <Lodex/utils/Format.h>

#include <lodex/utils/Numbers.h>

#include <atomic>

namespace Lodex {

namespace {
std::atomic<Format::Translator> translator{nullptr};
}

Format Format::tr(const CString& text)
{
    const Translator translate = translator.load();
    return Format(translate ? CString(translate(text.str())) : text);
}

void Format::set_translator(Translator translate)
{
    translator.store(translate);
}

Format& Format::arg(const CString& value)
{
    args_.push_back(value.str());
    return *this;
}

Format& Format::arg(long value)
{
    args_.push_back(std::to_string(value));
    return *this;
}

Format& Format::arg(double value)
{
    args_.push_back(lodex::format_general(value, 6));
    return *this;
}

CString Format::text() const
{
    const std::string& text = text_.str();
    std::string result;
    for (std::size_t i = 0; i < text.size(); ++i) {
        const bool place = text[i] == '%' && i + 1 < text.size() && text[i + 1] >= '1' && text[i + 1] <= '9';
        const std::size_t number = place ? static_cast<std::size_t>(text[i + 1] - '1') : args_.size();
        if (number < args_.size()) {
            result += args_[number];
            ++i;
        } else {
            result += text[i];
        }
    }
    return result;
}

void format_arg(Format& format, const CString& value)
{
    format.arg(value);
}

void format_arg(Format& format, long value)
{
    format.arg(value);
}

void format_arg(Format& format, const CString* value)
{
    format.arg(value ? *value : CString());
}

} // namespace Lodex
