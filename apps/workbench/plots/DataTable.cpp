#include "DataTable.h"

#include "lodex/utils/AtomicFile.h"
#include "lodex/utils/Numbers.h"

#include <Lodex/qtools/QtText.h>
#include <Lodex/utils/Logger.h>

#include <QBuffer>
#include <QClipboard>
#include <QCoreApplication>
#include <QFileDialog>
#include <QGuiApplication>
#include <QImage>
#include <QPainter>

#include <cmath>

namespace lodex {

namespace {

QString quoted_field(const QString& field)
{
    if (!field.contains(u',') && !field.contains(u'"') && !field.contains(u'\n'))
        return field;
    QString doubled = field;
    return u'"' + doubled.replace(QStringLiteral("\""), QStringLiteral("\"\"")) + u'"';
}

/// The file whole, or the old one untouched.
bool write_file(const QString& path, const std::string& bytes)
{
    try {
        AtomicFile file(path.toStdString());
        file.write(bytes);
        file.commit();
        return true;
    } catch (const std::runtime_error& error) {
        Lodex::Logger::log(Lodex::LogLevel::Fatal, std::string(error.what()) + "\n");
        return false;
    }
}

} // namespace

QString DataTable::tab_separated() const
{
    QString text = heading.join(u'\t') + u'\n';
    for (const QStringList& row : rows)
        text += row.join(u'\t') + u'\n';
    return text;
}

QString DataTable::csv() const
{
    const auto line = [](const QStringList& row) {
        QStringList fields;
        for (const QString& field : row)
            fields.append(quoted_field(field));
        return fields.join(u',') + QStringLiteral("\r\n");
    };
    QString text = line(heading);
    for (const QStringList& row : rows)
        text += line(row);
    return text;
}

QString table_number(double value)
{
    return std::isfinite(value) ? QString::fromStdString(format_general(value, 8)) : QString();
}

void copy_table(const DataTable& table)
{
    QGuiApplication::clipboard()->setText(table.tab_separated());
}

bool save_table(const DataTable& table, QWidget* parent)
{
    const QString path = QFileDialog::getSaveFileName(
        parent, QCoreApplication::translate("DataTable", "Save the table"), QString(),
        QCoreApplication::translate("DataTable", "Comma-separated values (*.csv);;All files (*)"));
    return !path.isEmpty() && write_file(path, table.csv().toStdString());
}

bool save_picture(QWidget& widget, QWidget* parent)
{
    const QString path =
        QFileDialog::getSaveFileName(parent, QCoreApplication::translate("DataTable", "Save the picture"), QString(),
                                     QCoreApplication::translate("DataTable", "Pictures (*.png);;All files (*)"));
    if (path.isEmpty())
        return false;
    QImage image(2 * widget.size(), QImage::Format_ARGB32_Premultiplied);
    image.setDevicePixelRatio(2);
    image.fill(Qt::transparent);
    widget.render(&image);
    QByteArray bytes;
    QBuffer buffer(&bytes);
    buffer.open(QIODevice::WriteOnly);
    return image.save(&buffer, "PNG") && write_file(path, bytes.toStdString());
}

} // namespace lodex
