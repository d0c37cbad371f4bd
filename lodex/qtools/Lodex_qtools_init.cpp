#include <Lodex/qtools/Lodex_qtools_init.h>

#include <Lodex/geobase/Lodex_geobase_init.h>
#include <Lodex/utils/Format.h>
#include <Lodex/utils/Lodex_utils_init.h>

#include <QCoreApplication>
#include <QString>

namespace Lodex {

namespace {

/// Asks the translations that the application has installed; messages live in the context "Messages".
std::string translated(const std::string& text)
{
    return QCoreApplication::translate("Messages", text.c_str()).toStdString();
}

} // namespace

// Runs before main() when a plug-in starts its libraries from static objects: no widgets and no pictures here.
void Lodex_qtools_init::start()
{
    Lodex_utils_init::initialize();
    Lodex_geobase_init::initialize();
    Format::set_translator(&translated);
}

} // namespace Lodex
