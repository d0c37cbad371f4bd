#include "Completion.h"

#include "lodex/interpreter/Verb.h"

#include <Lodex/geobase/GeobaseLib.h>
#include <Lodex/geobase/Style.h>
#include <Lodex/volumes/SGrid.h>

#include <algorithm>
#include <set>

namespace lodex {

namespace {

using Words = std::set<std::string>;

/// Cuts off the words that are complete (a blank stands behind them); what is left of the text is the word being typed.
std::vector<Word> take_complete_words(std::string_view text, std::size_t& begin)
{
    std::vector<Word> words;
    std::size_t at = begin;
    while (at < text.size()) {
        if (text[at] == ' ' || text[at] == '\t') {
            begin = ++at;
            continue;
        }
        Word word;
        word.quoted = text[at] == '"';
        const std::size_t end = word.quoted ? text.find('"', at + 1) : text.find_first_of(" \t", at);
        if (end == std::string_view::npos || (word.quoted && end + 1 == text.size())) {
            begin = at;
            return words;
        }
        word.text = text.substr(at + (word.quoted ? 1 : 0), end - at - (word.quoted ? 1 : 0));
        words.push_back(std::move(word));
        at = begin = end + (word.quoted ? 1 : 0);
    }
    return words;
}

/// Start of the last statement: behind the last ";" or line end outside quotes.
std::size_t statement_start(std::string_view text)
{
    std::size_t start = 0;
    bool quoted = false;
    for (std::size_t i = 0; i < text.size(); ++i) {
        quoted = text[i] == '"' ? !quoted : quoted && text[i] != '\n';
        if (!quoted && (text[i] == ';' || text[i] == '\n'))
            start = i + 1;
    }
    return start;
}

std::vector<std::string> split(const std::string& text)
{
    std::vector<std::string> words;
    for (std::size_t at = 0; at < text.size();) {
        const std::size_t end = std::min(text.find(' ', at), text.size());
        words.push_back(text.substr(at, end - at));
        at = end + 1;
    }
    return words;
}

/// Names of objects as they stand in a command: quoted when they hold a blank.
void add_names(Words& words, std::string_view type)
{
    const auto& catalogue = *Lodex::GeobaseLib::instance();
    for (const Lodex::TypeId* id : {&Lodex::SGrid::static_type_id_(), &Lodex::Style::static_type_id_()}) {
        if (type.empty() ? id == &Lodex::Style::static_type_id_() : std::string_view(id->name()) != type)
            continue;
        for (const Lodex::GObj* object : catalogue.objects(*id)) {
            const std::string& name = object->name().str();
            words.insert(name.find(' ') == std::string::npos ? name : '"' + name + '"');
        }
    }
}

/// The next words of the verbs of a type behind the words [first, ...).
void add_verb_words(Words& result, std::string_view type, const std::vector<Word>& words, std::size_t first)
{
    for (const Verb* verb : VerbRegistry::instance().verbs()) {
        if (verb->object_type != type)
            continue;
        const std::vector<std::string> name = split(verb->name);
        const std::size_t given = words.size() - first;
        const bool fits = given < name.size() &&
                          std::equal(name.begin(), name.begin() + static_cast<std::ptrdiff_t>(given),
                                     words.begin() + static_cast<std::ptrdiff_t>(first), words.end(),
                                     [](const std::string& a, const Word& b) { return !b.quoted && a == b.text; });
        if (fits)
            result.insert(name[given]);
    }
}

/// Keywords that are not given yet, and what may stand behind the one before.
void add_keywords(Words& result, const Verb& verb, const std::vector<Word>& words, std::size_t first)
{
    std::set<std::string, std::less<>> given;
    const Keyword* open = nullptr; // whose value is being typed
    for (std::size_t i = first; i < words.size(); ++i) {
        const Keyword* keyword = words[i].quoted ? nullptr : verb.keyword(words[i].text);
        open = keyword && !given.contains(keyword->name) ? keyword : nullptr;
        if (open)
            given.insert(open->name);
    }
    if (open) {
        if (open->kind == ValueKind::Flag)
            result.insert({"0", "1"});
        if (open->kind == ValueKind::Object)
            add_names(result, open->object_type.empty() ? "SGrid" : open->object_type);
        if (open->name == "objects")
            add_names(result, "SGrid");
        for (const std::string& choice : open->choices)
            result.insert(choice.find(' ') == std::string::npos ? choice : '"' + choice + '"');
        if (!open->may_be_empty)
            return;
    }
    for (const Keyword& keyword : verb.keywords) {
        if (!keyword.positional && !given.contains(keyword.name))
            result.insert(keyword.name);
    }
}

/// Where the verb of a statement starts, and the type of the object before it; empty without one.
std::size_t verb_start(const std::vector<Word>& words, std::string& type)
{
    const bool has_on = words.size() > 1 && !words[1].quoted && words[1].text == "on";
    const std::size_t type_word = has_on ? 2 : 1; // the "on" may be left out
    if (words.size() <= type_word || words[type_word].quoted ||
        !VerbRegistry::instance().is_object_type(words[type_word].text))
        return 1;
    type = words[type_word].text;
    // A name may have several words: the longest one that is an object's counts.
    std::size_t first = type_word + 2;
    std::string name;
    for (std::size_t i = type_word + 1; i < words.size(); ++i) {
        name += (i > type_word + 1 ? " " : "") + words[i].text;
        if (Lodex::GeobaseLib::instance()->find(name, type))
            first = i + 1;
    }
    return first;
}

Words words_behind(const std::vector<Word>& words)
{
    const VerbRegistry& verbs = VerbRegistry::instance();
    Words result;
    if (words.empty())
        return {"lodex"};
    if (words[0].text != "lodex")
        return result;
    const bool has_on = words.size() > 1 && !words[1].quoted && words[1].text == "on";
    if (has_on && words.size() == 2) {
        for (const Verb* verb : verbs.verbs()) {
            if (!verb->object_type.empty())
                result.insert(verb->object_type);
        }
        return result;
    }
    std::string type;
    std::size_t first = 1;                        // of the verb
    const std::size_t type_word = has_on ? 2 : 1; // the "on" may be left out
    if (words.size() > type_word && !words[type_word].quoted && verbs.is_object_type(words[type_word].text)) {
        type = words[type_word].text;
        if (words.size() == type_word + 1) {
            add_names(result, type);
            return result;
        }
        first = verb_start(words, type);
    } else if (has_on) {
        return result; // no such type
    } else if (words.size() == 1) {
        result.insert("on");
    }
    std::size_t length = 0;
    if (const Verb* verb = verbs.match(type, words, first, length))
        add_keywords(result, *verb, words, first + length);
    add_verb_words(result, type, words, first);
    if (words.size() > 1 && type.empty() && words[1].text == "help") {
        for (const Verb* verb : verbs.verbs())
            result.insert(split(verb->name).front());
    }
    return result;
}

} // namespace

Completion complete_command(std::string_view text)
{
    Completion completion;
    completion.begin = statement_start(text);
    const std::vector<Word> words = take_complete_words(text, completion.begin);
    const std::string_view typed = text.substr(completion.begin);
    for (const std::string& word : words_behind(words)) {
        if (word.starts_with(typed))
            completion.candidates.push_back(word);
    }
    return completion;
}

std::string command_hint(std::string_view text)
{
    std::size_t begin = statement_start(text);
    const std::vector<Word> words = take_complete_words(text, begin);
    if (words.empty() || words[0].text != "lodex")
        return {};
    std::string type;
    const std::size_t first = verb_start(words, type);
    std::size_t length = 0;
    const Verb* const verb =
        first <= words.size() ? VerbRegistry::instance().match(type, words, first, length) : nullptr;
    if (!verb)
        return {};
    const Keyword* open = nullptr;
    for (std::size_t i = first + length; i < words.size(); ++i) {
        const Keyword* keyword = words[i].quoted ? nullptr : verb->keyword(words[i].text);
        open = keyword ? keyword : open;
    }
    if (!open)
        return verb->name + ": " + verb->summary;
    std::string hint = open->name + " (" + std::string(to_text(open->kind));
    if (!open->unit.empty())
        hint += ", " + open->unit;
    hint += open->required ? ", required" : open->default_value.empty() ? "" : ", default " + open->default_value;
    return hint + "): " + open->meaning;
}

std::string common_beginning(const std::vector<std::string>& candidates)
{
    if (candidates.empty())
        return {};
    std::string common = candidates.front();
    for (const std::string& candidate : candidates)
        common.resize(static_cast<std::size_t>(std::ranges::mismatch(common, candidate).in1 - common.begin()));
    return common;
}

} // namespace lodex
