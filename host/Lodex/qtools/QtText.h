#pragma once

#include <Lodex/utils/CString.h>

#include <QString>

namespace Lodex {

[[nodiscard]] inline QString to_qstring(const CString& text)
{
    return QString::fromUtf8(text.c_str(), static_cast<qsizetype>(text.length()));
}

[[nodiscard]] inline CString to_cstring(const QString& text)
{
    return CString(text.toStdString());
}

} // namespace Lodex
