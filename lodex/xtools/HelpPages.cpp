#include <lodex/xtools/HelpPages.h>

#include <QFile>
#include <QHash>
#include <QRegularExpression>
#include <QTextDocument>
#include <QUrlQuery>

#include <algorithm>

namespace lodex {

namespace {

const QLatin1String kRoot(":/lodex/help/");
const QLatin1String kUrlRoot("/lodex/help/");

QString read(const QString& path)
{
    QFile file(kRoot + path);
    return file.open(QIODevice::ReadOnly) ? QString::fromUtf8(file.readAll()) : QString();
}

/// Refuses what would lead out of the help.
bool exists(const QString& path)
{
    return !path.isEmpty() && !path.contains(u"..") && !path.startsWith(u'/') && path.endsWith(u".html") &&
           QFile::exists(kRoot + path);
}

} // namespace

QString help_start_page()
{
    return QStringLiteral("Lodex.html");
}

std::vector<HelpPage> help_contents()
{
    std::vector<HelpPage> pages;
    static const QRegularExpression link(QStringLiteral("<a href=\"([^\"]+)\">([^<]+)</a>"));
    for (const QRegularExpressionMatch& match : link.globalMatch(read(help_start_page()))) {
        QTextDocument title; // takes out entities
        title.setHtml(match.captured(2));
        pages.push_back({match.captured(1), title.toPlainText()});
    }
    return pages;
}

std::optional<QUrl> help_target(const QString& key)
{
    for (const QString& part : key.split(u';', Qt::SkipEmptyParts)) {
        const QString alternative = part.trimmed();
        const QString scheme = alternative.section(u':', 0, 0);
        const QString rest = alternative.section(u':', 1);
        QString path;
        QString anchor;
        if (scheme == u"help" && rest.startsWith(u'?')) {
            const QUrlQuery query(rest.mid(1));
            path = query.queryItemValue(QStringLiteral("context"), QUrl::FullyDecoded) + u'/' +
                   query.queryItemValue(QStringLiteral("topic"), QUrl::FullyDecoded) + QStringLiteral(".html");
        } else if (scheme == u"help") {
            path = rest.section(u'#', 0, 0);
            anchor = rest.section(u'#', 1);
        } else if (scheme == u"winhelp") {
            path = rest + QStringLiteral(".html");
        }
        if (exists(path))
            return help_url(path, anchor);
    }
    return std::nullopt;
}

QUrl help_url(const QString& path, const QString& anchor)
{
    QUrl url;
    url.setScheme(QStringLiteral("qrc"));
    url.setPath(kUrlRoot + path.section(u'#', 0, 0));
    const QString fragment = anchor.isEmpty() ? path.section(u'#', 1) : anchor;
    if (!fragment.isEmpty())
        url.setFragment(fragment);
    return url;
}

QString help_key(const QUrl& url)
{
    if (url.scheme() != u"qrc" || !url.path().startsWith(kUrlRoot))
        return {};
    QString key = QStringLiteral("help:") + url.path().mid(kUrlRoot.size());
    if (url.hasFragment())
        key += u'#' + url.fragment();
    return key;
}

QString help_text(const QString& path)
{
    static QHash<QString, QString> texts;
    const QString file = path.section(u'#', 0, 0);
    const auto known = texts.constFind(file);
    if (known != texts.constEnd())
        return *known;
    QTextDocument document;
    document.setHtml(exists(file) ? read(file) : QString());
    return *texts.insert(file, document.toPlainText());
}

std::vector<HelpPage> search_help(const QString& query)
{
    const QStringList words = query.simplified().split(u' ', Qt::SkipEmptyParts);
    if (words.isEmpty())
        return help_contents();
    struct Hit {
        HelpPage page;
        qsizetype in_title;
        qsizetype in_text;
    };
    std::vector<Hit> hits;
    for (const HelpPage& page : help_contents()) {
        Hit hit{page, 0, 0};
        const QString text = help_text(page.path);
        const bool all = std::ranges::all_of(words, [&](const QString& word) {
            const qsizetype title_count = page.title.count(word, Qt::CaseInsensitive);
            const qsizetype text_count = text.count(word, Qt::CaseInsensitive);
            hit.in_title += title_count;
            hit.in_text += text_count;
            return title_count + text_count > 0;
        });
        if (all)
            hits.push_back(hit);
    }
    std::ranges::stable_sort(hits, [](const Hit& a, const Hit& b) {
        return a.in_title != b.in_title ? a.in_title > b.in_title : a.in_text > b.in_text;
    });
    std::vector<HelpPage> pages;
    for (const Hit& hit : hits)
        pages.push_back(hit.page);
    return pages;
}

} // namespace lodex
