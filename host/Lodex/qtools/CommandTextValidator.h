#pragma once

#include <QValidator>

namespace Lodex {

/// For free text that ends up in a command: refuses ";", the double quote and control characters, which could turn one
/// command into two. Pasted text that holds one is refused as a whole.
class CommandTextValidator : public QValidator {
    Q_OBJECT

public:
    explicit CommandTextValidator(QObject* parent = nullptr);
    State validate(QString& text, int& position) const override;
};

} // namespace Lodex
