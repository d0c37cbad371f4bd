#pragma once

#include <QWidget>

class QLineEdit;
class QListWidget;
class QTextBrowser;

namespace lodex {

/// The window that shows the help: contents and search on the left, the page on the right.
class HelpWindow : public QWidget {
    Q_OBJECT

public:
    explicit HelpWindow(QWidget* parent = nullptr);

    void show_page(const QUrl& url);

signals:
    /// The user or a program went to another page.
    void page_shown(const QUrl& url);

protected:
    void keyPressEvent(QKeyEvent* event) override;
    void changeEvent(QEvent* event) override;

private:
    void fill_list(const QString& query);
    void mark_words();
    void follow_page(const QUrl& url);
    void open_link(const QUrl& url);

    QLineEdit* search_;
    QListWidget* list_;
    QTextBrowser* browser_;
};

} // namespace lodex
