#pragma once

#include <QDir>
#include <QString>

/// Where tests put pictures of windows for people to look at: LODEX_PICTURES, else pictures/ in the build folder.
inline QString picture_folder()
{
    const QString folder = qEnvironmentVariable("LODEX_PICTURES", QStringLiteral(BUILD_BIN_DIR "/../pictures"));
    QDir().mkpath(folder);
    return folder;
}
