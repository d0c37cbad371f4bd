// Nothing is cut, in this language or in a longer one; pictures for people to look at.

#include "WizardTest.h"

#include "Pictures.h"

#include <QGroupBox>
#include <QLabel>
#include <QTranslator>

#include <functional>

namespace {

/// A language whose words are half as long again.
class LongLanguage : public QTranslator {
public:
    LongLanguage() { QCoreApplication::installTranslator(this); }
    ~LongLanguage() override { QCoreApplication::removeTranslator(this); }
    [[nodiscard]] bool isEmpty() const override { return false; }
    [[nodiscard]] QString translate(const char* context, const char* text, const char*, int) const override
    {
        const QString original = QString::fromUtf8(text);
        if (qstrcmp(context, "Kelvane::LQSGPropertyUpscaleDialog") != 0 || original.contains('<'))
            return {};
        QString longer = original;
        for (qsizetype i = 0; i < (original.size() + 1) / 2; ++i)
            longer += i % 6 == 0 ? QChar(' ') : QChar(u'ö');
        return longer;
    }
};

class WizardLook : public WizardTest {
protected:
    WizardLook() : light_(QApplication::palette()) {}
    ~WizardLook() override { QApplication::setPalette(light_); }

    static void use_dark_theme()
    {
        QPalette palette;
        const QColor window(45, 45, 48), base(30, 30, 30), text(225, 225, 225), dim(130, 130, 130);
        for (const auto role : {QPalette::Window, QPalette::AlternateBase, QPalette::Button, QPalette::ToolTipBase})
            palette.setColor(role, window);
        palette.setColor(QPalette::Base, base);
        for (const auto role : {QPalette::WindowText, QPalette::Text, QPalette::ButtonText, QPalette::ToolTipText,
                                QPalette::BrightText})
            palette.setColor(role, text);
        for (const auto role : {QPalette::WindowText, QPalette::Text, QPalette::ButtonText})
            palette.setColor(QPalette::Disabled, role, dim);
        palette.setColor(QPalette::PlaceholderText, dim);
        palette.setColor(QPalette::Highlight, QColor(38, 79, 120));
        palette.setColor(QPalette::HighlightedText, Qt::white);
        QApplication::setPalette(palette);
    }

    /// Every label, button and field has the room that it asks for, inside of the page.
    void expect_nothing_cut() const
    {
        QApplication::processEvents();
        const std::string page = dialog->currentPage()->title().toStdString() + ": ";
        for (const QWidget* widget : dialog->findChildren<QWidget*>()) {
            if (!widget->isVisible() || widget->window() != dialog)
                continue;
            if (!qobject_cast<const QLabel*>(widget) && !qobject_cast<const QAbstractButton*>(widget) &&
                !qobject_cast<const QGroupBox*>(widget) && !qobject_cast<const QLineEdit*>(widget) &&
                !qobject_cast<const QComboBox*>(widget))
                continue;
            const std::string what =
                page + widget->metaObject()->className() + ' ' + widget->objectName().toStdString();
            EXPECT_GE(widget->width(), widget->minimumSizeHint().width()) << what;
            EXPECT_GE(widget->height(), widget->minimumSizeHint().height()) << what;
            const QRect place(widget->mapTo(dialog.data(), QPoint()), widget->size());
            EXPECT_TRUE(dialog->rect().contains(place)) << what;
            const QRect inside(widget->mapTo(widget->parentWidget(), QPoint()), widget->size());
            EXPECT_TRUE(widget->parentWidget()->rect().contains(inside)) << what;
        }
    }
    void all_pages(const std::function<void(const QString& name)>& look)
    {
        const QSize size = dialog->size();
        const auto see = [&](const QString& name) {
            QApplication::processEvents();
            EXPECT_EQ(dialog->size(), size) << "the window keeps its size: " << name.toStdString();
            look(name);
        };
        see("grids");
        next();
        see("mapping");
        next();
        upscale_with("Porosity", "Power");
        see("method_porosity");
        upscale_with("Permeability", "Power");
        see("method_power");
        upscale_with("Permeability", "DFPressureSolver");
        see("method_permeability");
        next();
        see("properties_tensor");
        click(button(QWizard::BackButton));
        upscale_with("Indicator", "Most probable");
        see("method_indicator");
        next();
        see("properties_scalar");
        next();
        tick("zero_switch_");
        see("pre_processing");
        next();
        see("post_processing");
        next();
        see("summary_refused");
        tick("zero_switch_", false);
        click(button(QWizard::BackButton));
        next();
        see("summary");
    }
    void pictures(const QString& theme)
    {
        open();
        tick("fine_region_switch_");
        all_pages([&](const QString& name) {
            const QString file = picture_folder() + "/property_upscale_" + name + '_' + theme + ".png";
            ASSERT_TRUE(dialog->grab().save(file)) << file.toStdString();
        });
    }

private:
    QPalette light_;
};

TEST_F(WizardLook, NothingIsCut)
{
    open();
    all_pages([this](const QString&) { expect_nothing_cut(); });
    EXPECT_LE(dialog->width(), 800);
    EXPECT_LE(dialog->height(), 620);
}

TEST_F(WizardLook, NothingIsCutInALongLanguage)
{
    const LongLanguage language;
    open();
    EXPECT_GT(dialog->windowTitle().size(), 30);
    all_pages([this](const QString&) { expect_nothing_cut(); });
    EXPECT_LE(dialog->width(), 1024);
}

TEST_F(WizardLook, TheCommandIsTheSameInEveryLanguage)
{
    open();
    const std::string expected = command();
    dialog->close();
    run_deferred_deletes();
    const LongLanguage language;
    open();
    EXPECT_EQ(command(), expected);
}

TEST_F(WizardLook, PicturesInLight)
{
    pictures("light");
}

TEST_F(WizardLook, PicturesInDark)
{
    use_dark_theme();
    pictures("dark");
}

TEST_F(WizardLook, PicturesInALongLanguage)
{
    const LongLanguage language;
    pictures("long");
}

} // namespace
