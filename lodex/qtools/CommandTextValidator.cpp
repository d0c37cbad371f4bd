#include <Lodex/qtools/CommandTextValidator.h>

#include <algorithm>

namespace Lodex {

CommandTextValidator::CommandTextValidator(QObject* parent) : QValidator(parent)
{
}

QValidator::State CommandTextValidator::validate(QString& text, int&) const
{
    const auto refused = [](QChar c) {
        return c == u';' || c == u'"' || c.category() == QChar::Other_Control ||
               c.category() == QChar::Separator_Line || c.category() == QChar::Separator_Paragraph;
    };
    return std::ranges::any_of(text, refused) ? Invalid : Acceptable;
}

} // namespace Lodex

#include "Lodex/qtools/moc_CommandTextValidator.cpp"
