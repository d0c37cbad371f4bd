#pragma once

#include <QLineEdit>

namespace Lodex {

/// A line edit that holds a real number in the C locale.
class LQDoubleLineEdit : public QLineEdit {
    Q_OBJECT

public:
    explicit LQDoubleLineEdit(QWidget* parent = nullptr);
    explicit LQDoubleLineEdit(double value, QWidget* parent = nullptr);

    /// 0 when the text does not read as a number.
    [[nodiscard]] double value() const;
    /// Shortest text that reads back as the same number, at most six digits for round values ("50").
    void setValue(double value);
    [[nodiscard]] bool isValid() const;
};

/// A line edit that holds a whole number.
class LQIntLineEdit : public QLineEdit {
    Q_OBJECT

public:
    explicit LQIntLineEdit(QWidget* parent = nullptr);

    /// 0 when the text does not read as a whole number.
    [[nodiscard]] int value() const;
    void setValue(int value);
};

} // namespace Lodex
