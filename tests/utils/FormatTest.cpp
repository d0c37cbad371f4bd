#include <Lodex/utils/Format.h>

#include <gtest/gtest.h>

#include <limits>

using Lodex::CString;
using Lodex::Format;
using Lodex::format_arg;

TEST(Format, FillsPlacesInOrder)
{
    Format format("SGrid: %1 Selected Cell Section: %2 %3 %4\n");
    format.arg("Reek").arg(1).arg(2L).arg(3);
    EXPECT_EQ(format.text(), CString("SGrid: Reek Selected Cell Section: 1 2 3\n"));
}

TEST(Format, ArgumentIsPutInOnce)
{
    Format format("%1 and %2");
    format.arg("%2").arg("%1");
    EXPECT_EQ(format.text(), CString("%2 and %1"));
}

TEST(Format, OnePlaceMayStandTwiceAndOutOfOrder)
{
    Format format("%2 %1 %2");
    format.arg("a").arg("b");
    EXPECT_EQ(format.text(), CString("b a b"));
}

TEST(Format, PlaceWithoutArgumentStays)
{
    Format format("%1 %2 %9");
    format.arg("x");
    EXPECT_EQ(format.text(), CString("x %2 %9"));
}

TEST(Format, OtherPercentSignsStay)
{
    Format format("100% %0 %a %% %1%");
    format.arg(7);
    EXPECT_EQ(format.text(), CString("100% %0 %a %% 7%"));
}

TEST(Format, PlaceIsOneDigit)
{
    Format format("%10");
    format.arg("x");
    EXPECT_EQ(format.text(), CString("x0"));
}

TEST(Format, NineArgumentsAndMore)
{
    Format format("%1%2%3%4%5%6%7%8%9");
    for (int i = 1; i <= 10; ++i)
        format.arg(i);
    EXPECT_EQ(format.text(), CString("123456789"));
}

TEST(Format, DoubleHasSixDigitsInTheCLocale)
{
    const auto text = [](double value) { return Format("%1").arg(value).text(); };
    EXPECT_EQ(text(0.5), CString("0.5"));
    EXPECT_EQ(text(50.0), CString("50"));
    EXPECT_EQ(text(1234567.0), CString("1.23457e+06"));
    EXPECT_EQ(text(1.0 / 3.0), CString("0.333333"));
    EXPECT_EQ(text(-1e-7), CString("-1e-07"));
    EXPECT_EQ(text(std::numeric_limits<double>::quiet_NaN()), CString("nan"));
    EXPECT_EQ(text(-std::numeric_limits<double>::infinity()), CString("-inf"));
}

TEST(Format, FreeFunctionsFillToo)
{
    Format format("%1|%2|%3|%4");
    const CString text("pointer");
    format_arg(format, CString("text"));
    format_arg(format, 12L);
    format_arg(format, &text);
    format_arg(format, static_cast<const CString*>(nullptr));
    EXPECT_EQ(format.text(), CString("text|12|pointer|"));
}

TEST(Format, EmptyArgumentTakesItsPlace)
{
    EXPECT_EQ(Format("[%1][%2]").arg("").arg("b").text(), CString("[][b]"));
    EXPECT_EQ(Format("[%1]").arg(static_cast<const char*>(nullptr)).text(), CString("[]"));
}

TEST(Format, TranslatesTheTextNotTheArguments)
{
    Format::set_translator([](const std::string& text) {
        return text == "Grid %1 not found" ? std::string("Maillage %1 introuvable") : text;
    });
    EXPECT_EQ(Format::tr("Grid %1 not found").arg("Grid %1 not found").text(),
              CString("Maillage Grid %1 not found introuvable"));
    EXPECT_EQ(Format::tr("other").text(), CString("other"));
    EXPECT_EQ(Format("Grid %1 not found").arg("x").text(), CString("Grid x not found"));
    Format::set_translator(nullptr);
    EXPECT_EQ(Format::tr("Grid %1 not found").arg("x").text(), CString("Grid x not found"));
}
