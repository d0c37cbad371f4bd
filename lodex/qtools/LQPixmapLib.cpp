#include <Lodex/qtools/LQPixmapLib.h>

#include <lodex/qtools/SvgIconEngine.h>

#include <Lodex/qtools/QtText.h>

#include <QDir>
#include <QFile>
#include <QGuiApplication>
#include <QSvgRenderer>

namespace Lodex {

namespace {

/// File of a picture in the resources; empty when there is none of that name.
QString picture_file(const CString& name)
{
    if (name.empty() || name.str().find('/') != std::string::npos)
        return {};
    const QString file = QStringLiteral(":/lodex/icons/") + to_qstring(name) + QStringLiteral(".svg");
    return QFile::exists(file) ? file : QString();
}

} // namespace

QPixmap LQPixmapLib::load(const CString& name)
{
    const QString file = picture_file(name);
    if (file.isEmpty() || !qGuiApp)
        return {};
    const qreal ratio = qGuiApp->devicePixelRatio();
    lodex::SvgIconEngine engine(file, lodex::SvgIconEngine::Colours::AsDrawn);
    QPixmap picture =
        engine.pixmap((QSizeF(QSvgRenderer(file).defaultSize()) * ratio).toSize(), QIcon::Normal, QIcon::Off);
    picture.setDevicePixelRatio(ratio);
    return picture;
}

QIcon LQPixmapLib::icon(const CString& name)
{
    const QString file = picture_file(name);
    return file.isEmpty() ? QIcon() : QIcon(new lodex::SvgIconEngine(file)); // the icon owns its engine
}

QStringList LQPixmapLib::names()
{
    QStringList names;
    for (const QString& file : QDir(QStringLiteral(":/lodex/icons")).entryList({QStringLiteral("*.svg")}))
        names.append(file.chopped(4));
    names.sort();
    return names;
}

} // namespace Lodex
