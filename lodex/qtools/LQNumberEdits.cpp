#include <Lodex/qtools/LQNumberEdits.h>

#include <lodex/utils/Numbers.h>

#include <QDoubleValidator>
#include <QIntValidator>
#include <QLocale>

#include <cmath>

namespace Lodex {

namespace {

QLocale number_locale()
{
    QLocale locale = QLocale::c();
    locale.setNumberOptions(QLocale::RejectGroupSeparator | QLocale::OmitGroupSeparator);
    return locale;
}

double read_double(const QString& text, bool& ok)
{
    const double value = number_locale().toDouble(text.trimmed(), &ok);
    ok = ok && std::isfinite(value);
    return ok ? value : 0.0;
}

} // namespace

LQDoubleLineEdit::LQDoubleLineEdit(QWidget* parent) : QLineEdit(parent)
{
    auto* validator = new QDoubleValidator(this);
    validator->setLocale(number_locale());
    setValidator(validator);
}

LQDoubleLineEdit::LQDoubleLineEdit(double value, QWidget* parent) : LQDoubleLineEdit(parent)
{
    setValue(value);
}

double LQDoubleLineEdit::value() const
{
    bool ok = false;
    return read_double(text(), ok);
}

void LQDoubleLineEdit::setValue(double value)
{
    setText(QString::fromStdString(lodex::format_shortest(value + 0.0))); // "-0" would only puzzle its reader
}

bool LQDoubleLineEdit::isValid() const
{
    bool ok = false;
    static_cast<void>(read_double(text(), ok));
    return ok;
}

LQIntLineEdit::LQIntLineEdit(QWidget* parent) : QLineEdit(parent)
{
    auto* validator = new QIntValidator(this);
    validator->setLocale(number_locale());
    setValidator(validator);
}

int LQIntLineEdit::value() const
{
    bool ok = false;
    const int value = number_locale().toInt(text().trimmed(), &ok);
    return ok ? value : 0;
}

void LQIntLineEdit::setValue(int value)
{
    setText(QString::number(value));
}

} // namespace Lodex

#include "Lodex/qtools/moc_LQNumberEdits.cpp"
