#include <Lodex/qtools/CommandTextValidator.h>
#include <Lodex/qtools/LQNumberEdits.h>

#include <gtest/gtest.h>

#include <QApplication>
#include <QClipboard>
#include <QTest>

using Lodex::CommandTextValidator;
using Lodex::LQDoubleLineEdit;
using Lodex::LQIntLineEdit;

namespace {

/// Runs a test under a locale with a comma as decimal point.
struct GermanLocale {
    GermanLocale() { QLocale::setDefault(QLocale(QLocale::German)); }
    ~GermanLocale() { QLocale::setDefault(QLocale::c()); }
};

} // namespace

TEST(DoubleLineEdit, ShowsTheShortestText)
{
    EXPECT_EQ(LQDoubleLineEdit(50.0).text(), "50");
    EXPECT_EQ(LQDoubleLineEdit(0.25).text(), "0.25");
    EXPECT_EQ(LQDoubleLineEdit(-0.0).text(), "0");
    EXPECT_EQ(LQDoubleLineEdit(1234567.0).text(), "1234567");
    EXPECT_TRUE(LQDoubleLineEdit().text().isEmpty());
}

TEST(DoubleLineEdit, ReadsBackTheSameNumber)
{
    for (const double value : {0.1, 1.0 / 3, 1e-300, 12345678.901, -2.5e17}) {
        LQDoubleLineEdit edit;
        edit.setValue(value);
        EXPECT_EQ(edit.value(), value);
        EXPECT_TRUE(edit.isValid());
    }
}

TEST(DoubleLineEdit, UsesThePointWhateverTheLocale)
{
    const GermanLocale german;
    LQDoubleLineEdit edit(0.5);
    EXPECT_EQ(edit.text(), "0.5");
    EXPECT_EQ(edit.value(), 0.5);
    edit.clear();
    QTest::keyClicks(&edit, "12.75");
    EXPECT_EQ(edit.text(), "12.75");
    EXPECT_EQ(edit.value(), 12.75);
}

TEST(DoubleLineEdit, TextThatIsNoNumberIsZeroAndInvalid)
{
    LQDoubleLineEdit edit;
    for (const char* text : {"", "abc", "1,5", "1e999", "nan", "inf", "1 2", "-"}) {
        edit.setText(text);
        EXPECT_EQ(edit.value(), 0) << text;
        EXPECT_FALSE(edit.isValid()) << text;
    }
    edit.clear();
    QTest::keyClicks(&edit, "1x2;");
    EXPECT_EQ(edit.text(), "12") << "letters cannot be typed";
}

TEST(IntLineEdit, HoldsWholeNumbers)
{
    LQIntLineEdit edit;
    EXPECT_TRUE(edit.text().isEmpty());
    EXPECT_EQ(edit.value(), 0);
    edit.setValue(12345);
    EXPECT_EQ(edit.text(), "12345");
    EXPECT_EQ(edit.value(), 12345);
    for (const char* text : {"2.5", "x", "99999999999", "1,000"}) {
        edit.setText(text);
        EXPECT_EQ(edit.value(), 0) << text;
    }
    edit.clear();
    QTest::keyClicks(&edit, "-7.3");
    EXPECT_EQ(edit.value(), -73) << "the point cannot be typed";
}

TEST(CommandTextValidator, RefusesWhatEndsACommand)
{
    CommandTextValidator validator;
    int position = 0;
    for (const char* good : {"", "NEW", "my grid 2", "a+b", "Größe", "%1 'x'"}) {
        QString text = QString::fromUtf8(good);
        EXPECT_EQ(validator.validate(text, position), QValidator::Acceptable) << good;
    }
    for (const QString& bad : {QString("a;b"), QString("a\"b"), QString("a\nb"), QString("a\tb"), QString(QChar(0)),
                               QString(QChar(0x85)), QString(QChar(0x2028))}) {
        QString text = bad;
        EXPECT_EQ(validator.validate(text, position), QValidator::Invalid) << bad.toStdString();
        EXPECT_EQ(text, bad) << "nothing is mended silently";
    }
}

TEST(CommandTextValidator, PastedTextIsRefusedAsAWhole)
{
    QLineEdit edit;
    edit.setValidator(new CommandTextValidator(&edit));
    QTest::keyClicks(&edit, "NE;W\"");
    EXPECT_EQ(edit.text(), "NEW");
    QApplication::clipboard()->setText("X; lodex destroy objects ALL");
    edit.paste();
    EXPECT_EQ(edit.text(), "NEW");
    QApplication::clipboard()->setText("_2");
    edit.paste();
    EXPECT_EQ(edit.text(), "NEW_2");
}
