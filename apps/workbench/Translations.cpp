#include "Translations.h"

#include <QCoreApplication>
#include <QDir>
#include <QLibraryInfo>
#include <QTranslator>

#include <memory>

// Outside of any namespace, as the toolkit wants it.
static void bring_in_texts()
{
#ifdef LODEX_TRANSLATIONS
    Q_INIT_RESOURCE(translations);
#endif
}

namespace lodex {

namespace {

const QString& source_language()
{
    static const QString english = QStringLiteral("en");
    return english;
}

struct Installed {
    QString language = source_language();
    std::unique_ptr<QTranslator> own, toolkit;
};

Installed& installed()
{
    static Installed one;
    return one;
}

} // namespace

QStringList languages()
{
    bring_in_texts();
    QStringList found{source_language()};
    for (const QString& file :
         QDir(QStringLiteral(":/translations")).entryList({QStringLiteral("lodex_*.qm")}, QDir::Files, QDir::Name))
        found.append(file.mid(6).chopped(3));
    return found;
}

QString language_for(const QStringList& wanted)
{
    const QStringList known = languages();
    for (const QString& one : wanted) {
        const QString language = one.left(2).toLower();
        if (known.contains(language))
            return language;
    }
    return source_language();
}

bool use_language(const QString& language)
{
    bring_in_texts();
    Installed& now = installed();
    for (auto* translator : {&now.own, &now.toolkit}) {
        if (*translator)
            QCoreApplication::removeTranslator(translator->get());
        translator->reset();
    }
    now.language = source_language();
    if (language == source_language())
        return true;
    auto own = std::make_unique<QTranslator>();
    if (!own->load(QStringLiteral(":/translations/lodex_") + language + QStringLiteral(".qm")))
        return false;
    // Buttons and dialogs of the toolkit, where its own texts are installed.
    auto toolkit = std::make_unique<QTranslator>();
    if (toolkit->load(QStringLiteral("qtbase_") + language, QLibraryInfo::path(QLibraryInfo::TranslationsPath))) {
        QCoreApplication::installTranslator(toolkit.get());
        now.toolkit = std::move(toolkit);
    }
    QCoreApplication::installTranslator(own.get());
    now.own = std::move(own);
    now.language = language;
    return true;
}

QString current_language()
{
    return installed().language;
}

} // namespace lodex
