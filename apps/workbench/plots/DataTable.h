#pragma once

#include <QString>
#include <QStringList>

#include <vector>

class QWidget;

namespace lodex {

/// Rows of texts with a heading, as shown, copied and saved. Numbers are in the C locale.
struct DataTable {
    QStringList heading;
    std::vector<QStringList> rows;

    /// Tab-separated lines, as spreadsheets take them from the clipboard.
    [[nodiscard]] QString tab_separated() const;
    /// Comma-separated lines (RFC 4180): a text with a comma, a quote or a line end stands in quotes.
    [[nodiscard]] QString csv() const;
};

/// A number for a table, 8 significant digits; empty when it is undefined.
[[nodiscard]] QString table_number(double value);

/// Puts the table on the clipboard.
void copy_table(const DataTable& table);

/// Asks for a file and writes the table there; a failure stands in the log. False when nothing was written.
bool save_table(const DataTable& table, QWidget* parent);
/// Asks for a file and saves a picture of the widget at twice its size; a failure stands in the log.
bool save_picture(QWidget& widget, QWidget* parent);

} // namespace lodex
