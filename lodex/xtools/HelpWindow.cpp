#include <lodex/xtools/HelpWindow.h>

#include <lodex/xtools/HelpBrowser.h>
#include <lodex/xtools/HelpPages.h>

#include <Lodex/qtools/LQPixmapLib.h>

#include <QDesktopServices>
#include <QHBoxLayout>
#include <QKeyEvent>
#include <QLineEdit>
#include <QListWidget>
#include <QShortcut>
#include <QSplitter>
#include <QTextBrowser>
#include <QToolButton>
#include <QVBoxLayout>

namespace lodex {

namespace {

constexpr int kPathRole = Qt::UserRole;
constexpr QSize kStartSize(900, 640);

QToolButton* tool_button(QWidget* parent, const char* icon, const QString& tip, const QString& name)
{
    auto* button = new QToolButton(parent);
    button->setIcon(Lodex::LQPixmapLib::icon(icon));
    button->setToolTip(tip);
    button->setAccessibleName(tip);
    button->setObjectName(name);
    button->setAutoRaise(true);
    return button;
}

/// Quiet colours that follow the window's theme.
QString style_sheet(const QPalette& palette)
{
    const QString line = palette.color(QPalette::Mid).name();
    return QStringLiteral("h1 { font-size: x-large; } h2 { font-size: large; margin-top: 18px; } "
                          "table { border-collapse: collapse; } th { text-align: left; padding: 3px 8px 3px 0; } "
                          "td { padding: 3px 8px 3px 0; border-top: 1px solid %1; } "
                          "a { color: %2; } code { font-family: monospace; } "
                          "pre { white-space: pre-wrap; margin-left: 12px; }")
        .arg(line, palette.color(QPalette::Link).name());
}

} // namespace

HelpWindow::HelpWindow(QWidget* parent)
    : QWidget(parent, Qt::Window), search_(new QLineEdit(this)), list_(new QListWidget(this)),
      browser_(new HelpBrowser(this))
{
    setObjectName(QStringLiteral("helpWindow"));
    setWindowTitle(tr("Help"));
    setWindowIcon(Lodex::LQPixmapLib::icon("lodex"));
    setAttribute(Qt::WA_QuitOnClose, false);

    auto* back = tool_button(this, "go_back", tr("Back"), QStringLiteral("helpBack"));
    auto* forward = tool_button(this, "go_forward", tr("Forward"), QStringLiteral("helpForward"));
    auto* contents = tool_button(this, "help_contents", tr("Contents"), QStringLiteral("helpContentsButton"));
    search_->setObjectName(QStringLiteral("helpSearch"));
    search_->setPlaceholderText(tr("Search"));
    search_->setClearButtonEnabled(true);
    search_->setToolTip(tr("Words to look for; Enter goes to the next place on the page"));
    list_->setObjectName(QStringLiteral("helpContents"));
    list_->setWordWrap(true);
    browser_->setObjectName(QStringLiteral("helpBrowser"));
    browser_->setOpenLinks(false);
    browser_->document()->setDefaultStyleSheet(style_sheet(palette()));
    browser_->document()->setDocumentMargin(14);

    auto* bar = new QHBoxLayout;
    bar->addWidget(back);
    bar->addWidget(forward);
    bar->addWidget(contents);
    bar->addStretch(1);
    auto* left = new QWidget(this);
    auto* left_layout = new QVBoxLayout(left);
    left_layout->setContentsMargins(0, 0, 0, 0);
    left_layout->addLayout(bar);
    left_layout->addWidget(search_);
    left_layout->addWidget(list_, 1);
    auto* splitter = new QSplitter(this);
    splitter->addWidget(left);
    splitter->addWidget(browser_);
    splitter->setStretchFactor(1, 1);
    splitter->setSizes({kStartSize.width() / 4, kStartSize.width() * 3 / 4});
    auto* layout = new QVBoxLayout(this);
    layout->addWidget(splitter);
    resize(kStartSize);

    back->setEnabled(false);
    forward->setEnabled(false);
    connect(browser_, &QTextBrowser::backwardAvailable, back, &QWidget::setEnabled);
    connect(browser_, &QTextBrowser::forwardAvailable, forward, &QWidget::setEnabled);
    connect(back, &QToolButton::clicked, browser_, &QTextBrowser::backward);
    connect(forward, &QToolButton::clicked, browser_, &QTextBrowser::forward);
    connect(contents, &QToolButton::clicked, this, [this] { show_page(help_url(help_start_page())); });
    connect(browser_, &QTextBrowser::anchorClicked, this, &HelpWindow::open_link);
    connect(browser_, &QTextBrowser::sourceChanged, this, &HelpWindow::follow_page);
    connect(search_, &QLineEdit::textChanged, this, &HelpWindow::fill_list);
    connect(search_, &QLineEdit::returnPressed, this, [this] {
        const QString word = search_->text().simplified().section(u' ', 0, 0);
        if (!word.isEmpty() && !browser_->find(word)) {
            browser_->moveCursor(QTextCursor::Start); // once around
            browser_->find(word);
        }
    });
    const auto open_item = [this](const QListWidgetItem* item) {
        if (item)
            show_page(help_url(item->data(kPathRole).toString()));
    };
    connect(list_, &QListWidget::itemClicked, this, open_item);
    connect(list_, &QListWidget::itemActivated, this, open_item);
    connect(new QShortcut(QKeySequence::Find, this), &QShortcut::activated, search_, [this] {
        search_->setFocus();
        search_->selectAll();
    });
    fill_list({});
}

void HelpWindow::show_page(const QUrl& url)
{
    browser_->setSource(url);
}

void HelpWindow::open_link(const QUrl& url)
{
    if (url.scheme() == u"http" || url.scheme() == u"https")
        QDesktopServices::openUrl(url);
    else
        browser_->setSource(browser_->source().resolved(url));
}

void HelpWindow::fill_list(const QString& query)
{
    list_->clear();
    for (const HelpPage& page : search_help(query)) {
        auto* item = new QListWidgetItem(page.title, list_);
        item->setData(kPathRole, page.path);
    }
    mark_words();
    follow_page(browser_->source());
}

void HelpWindow::mark_words()
{
    QList<QTextEdit::ExtraSelection> marks;
    for (const QString& word : search_->text().simplified().split(u' ', Qt::SkipEmptyParts)) {
        if (word.size() < 2)
            continue; // every other letter would be marked
        for (QTextCursor at = browser_->document()->find(word); !at.isNull();
             at = browser_->document()->find(word, at)) {
            QTextEdit::ExtraSelection mark;
            mark.cursor = at;
            mark.format.setBackground(palette().highlight());
            mark.format.setForeground(palette().highlightedText());
            marks.append(mark);
        }
    }
    browser_->setExtraSelections(marks);
}

void HelpWindow::follow_page(const QUrl& url)
{
    const QString key = help_key(url);
    QListWidgetItem* shown = nullptr;
    for (int i = 0; i < list_->count(); ++i) {
        QListWidgetItem* item = list_->item(i);
        const QString item_key = QStringLiteral("help:") + item->data(kPathRole).toString();
        if (item_key == key || (!shown && item_key.section(u'#', 0, 0) == key.section(u'#', 0, 0)))
            shown = item;
    }
    list_->setCurrentItem(shown);
    mark_words();
    if (!key.isEmpty())
        emit page_shown(url);
}

void HelpWindow::changeEvent(QEvent* event)
{
    QWidget::changeEvent(event);
    if (event->type() != QEvent::PaletteChange)
        return;
    browser_->document()->setDefaultStyleSheet(style_sheet(palette()));
    if (!browser_->source().isEmpty())
        browser_->reload(); // takes the new colours
    mark_words();
}

void HelpWindow::keyPressEvent(QKeyEvent* event)
{
    if (event->matches(QKeySequence::Cancel))
        close();
    else if (event->matches(QKeySequence::Back))
        browser_->backward();
    else if (event->matches(QKeySequence::Forward))
        browser_->forward();
    else
        QWidget::keyPressEvent(event);
}

} // namespace lodex
