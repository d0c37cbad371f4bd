#pragma once

#include <QDialog>

class QTreeWidget;

namespace lodex {

/// Shows the report of a grid as a tree; the user may copy it, or save it as JSON.
class ReportDialog : public QDialog {
    Q_OBJECT

public:
    /// The JSON text is what the command "report" answers.
    ReportDialog(const QString& grid, const QString& json, QWidget* parent = nullptr);

signals:
    /// The user wants the report in this file.
    void save_requested(const QString& path);

private:
    void save();

    QString json_;
    QTreeWidget* tree_;
};

} // namespace lodex
