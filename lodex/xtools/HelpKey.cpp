#include <lodex/xtools/HelpKey.h>

#include <Lodex/xtools/XMHelpManager.h>

#include <QKeySequence>
#include <QShortcut>
#include <QWidget>

#include <string>

namespace lodex {

void set_help_page(QWidget& window, const char* path)
{
    auto* shortcut = new QShortcut(QKeySequence(QKeySequence::HelpContents), &window);
    shortcut->setObjectName("helpKey");
    QObject::connect(shortcut, &QShortcut::activated, &window,
                     [key = "help:" + std::string(path)] {
                         Lodex::XMHelpManager::instance()->display(Lodex::CopyCString(key + ";winhelp:Lodex"));
                     });
}

} // namespace lodex
