#include "frame/Help.h"

#include <Lodex/xtools/XMHelpManager.h>

namespace Kelvane {

Lodex::CopyCString help_topic_key(const Lodex::CString& topic)
{
    return "help:?context=Dorvan&topic=" + topic.str();
}

Lodex::CopyCString help_document_key(const Lodex::CString& anchor)
{
    return "help:user-doc/sgrid_new.html#" + anchor.str() + ";winhelp:Lodex";
}

void show_help(const Lodex::CopyCString& key)
{
    Lodex::XMHelpManager::instance()->display(key);
}

} // namespace Kelvane
