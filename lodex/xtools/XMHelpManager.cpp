#include <Lodex/xtools/XMHelpManager.h>

#include <lodex/xtools/HelpPages.h>
#include <lodex/xtools/HelpWindow.h>

#include <Lodex/qtools/QtText.h>
#include <Lodex/utils/Logger.h>

#include <QApplication>
#include <QPointer>

namespace Lodex {

namespace {

class HelpManager : public XMHelpManager {
public:
    void display(const CopyCString& key) override
    {
        const std::optional<QUrl> target = lodex::help_target(to_qstring(key));
        if (!target) {
            Logger::warning(Format::tr("There is no help page for \"%1\".\n").arg(key));
            return;
        }
        open_window();
        window_->show_page(*target);
        current_key_ = key; // as asked for, fall-backs included
        window_->show();
        window_->raise();
        window_->activateWindow();
    }

    [[nodiscard]] bool has_page(const CString& key) const override
    {
        return lodex::help_target(to_qstring(key)).has_value();
    }

    [[nodiscard]] CString current_key() const override { return current_key_; }

private:
    /// A modal dialog would lock a window that is not its own child out, so the help belongs to it.
    void open_window()
    {
        QWidget* owner = QApplication::activeModalWidget();
        if (window_ && window_->parentWidget() != owner)
            delete window_;
        if (window_)
            return;
        static const bool cleaned_up = [] {
            qAddPostRoutine([] { delete static_cast<HelpManager*>(XMHelpManager::instance())->window_; });
            return true;
        }();
        static_cast<void>(cleaned_up);
        window_ = new lodex::HelpWindow(owner);
        QObject::connect(window_, &lodex::HelpWindow::page_shown, window_,
                         [this](const QUrl& url) { current_key_ = to_cstring(lodex::help_key(url)); });
    }

    QPointer<lodex::HelpWindow> window_;
    CString current_key_;
};

} // namespace

XMHelpManager* XMHelpManager::instance()
{
    static HelpManager manager;
    return &manager;
}

} // namespace Lodex
