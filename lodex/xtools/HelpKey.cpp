#include "HelpKey.h"

#include <Lodex/xtools/XMHelpManager.h>

#include <QKeySequence>
#include <QShortcut>
#include <QWidget>

#include <string>

namespace lodex {

void set_help_anchor(QWidget& window, const char* anchor)
{
    auto* shortcut = new QShortcut(QKeySequence(QKeySequence::HelpContents), &window);
    shortcut->setObjectName("helpKey");
    QObject::connect(shortcut, &QShortcut::activated, &window,
                     [key = "help:user-doc/workbench.html#" + std::string(anchor)] {
                         Lodex::XMHelpManager::instance()->display(Lodex::CopyCString(key + ";winhelp:Lodex"));
                     });
}

} // namespace lodex
