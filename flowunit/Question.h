#pragma once

class QString;
class QWidget;

namespace Kelvane {

enum class Answer { Yes, No, Cancel };

/// Asks with the buttons Yes and No, Yes being the default. Escape and closing the box mean No.
[[nodiscard]] Answer ask(QWidget* parent, const QString& text);

/// The same with Cancel, which is what Escape and closing the box mean.
[[nodiscard]] Answer ask_or_cancel(QWidget* parent, const QString& text);

} // namespace Kelvane
