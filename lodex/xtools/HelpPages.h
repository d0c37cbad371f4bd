#pragma once

#include <QString>
#include <QUrl>

#include <optional>
#include <vector>

namespace lodex {

/// One page of the help, as listed on the start page.
struct HelpPage {
    QString path;  ///< below the root of the help, "Dorvan/dox_FlowUnitAnalysis.html"
    QString title; ///< as the start page calls it
};

/// Page of the contents; every other page can be reached from its links.
[[nodiscard]] QString help_start_page();

/// The pages in the order of the start page.
[[nodiscard]] std::vector<HelpPage> help_contents();

/// Where a help key leads: the first of its alternatives that has a page. Nothing when none has one. A key is
/// "help:?context=CONTEXT&topic=TOPIC" (the page CONTEXT/TOPIC.html), "help:DOCUMENT#ANCHOR" or "winhelp:MANUAL" (the
/// start page of that manual); alternatives are separated by ";".
[[nodiscard]] std::optional<QUrl> help_target(const QString& key);

/// The address that the browser loads for a path below the root of the help.
[[nodiscard]] QUrl help_url(const QString& path, const QString& anchor = {});

/// The key of the page behind an address of the browser; empty for an address outside of the help.
[[nodiscard]] QString help_key(const QUrl& url);

/// The page's text without markup; empty when there is no such page.
[[nodiscard]] QString help_text(const QString& path);

/// Pages that hold every word of the query, those with most of them in the title first. Letter case does not matter.
[[nodiscard]] std::vector<HelpPage> search_help(const QString& query);

} // namespace lodex
