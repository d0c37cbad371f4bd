#include "StatementBinder.h"

#include "Lists.h"
#include "lodex/utils/Names.h"
#include "lodex/utils/Numbers.h"

#include <Lodex/geobase/GeobaseLib.h>

#include <algorithm>
#include <optional>

namespace lodex {

namespace {

using Values = std::map<std::string, Call::Value, std::less<>>;

[[noreturn]] void fail(const std::string& message, TextPosition position)
{
    throw CommandError(message, position);
}

/// "create sgrid", "on SGrid ... fill_property".
std::string title(const Verb& verb)
{
    return verb.object_type.empty() ? "\"" + verb.name + "\"" : "\"" + verb.name + "\" of " + verb.object_type;
}

TextPosition position_behind(const Statement& statement, std::size_t word)
{
    return word < statement.words.size() ? statement.words[word].position : statement.words.back().position;
}

void check_number(double number, const Keyword& keyword, const std::string& text, TextPosition position)
{
    if (number < keyword.min || number > keyword.max) {
        fail("\"" + keyword.name + "\" is \"" + text + "\"; expected " +
                 (number < keyword.min ? "at least " + format_shortest(keyword.min) : "at most " + format_shortest(keyword.max)),
             position);
    }
}

/// What can be said of a value without the catalogue.
void check_value(const Keyword& keyword, const Call::Value& value)
{
    const std::string& text = value.text;
    const auto expected = [&](const std::string& what) {
        fail("\"" + keyword.name + "\" is \"" + text + "\"; expected " + what, value.position);
    };
    if (text.empty()) {
        if (!keyword.may_be_empty)
            fail("\"" + keyword.name + "\" has no value", value.position);
        return;
    }
    switch (keyword.kind) {
    case ValueKind::Flag:
        if (text != "0" && text != "1")
            expected("0 or 1");
        break;
    case ValueKind::Integer: {
        const auto number = parse_long(text);
        if (!number)
            expected("a whole number");
        check_number(static_cast<double>(*number), keyword, text, value.position);
        break;
    }
    case ValueKind::Real: {
        const auto number = parse_double(text);
        if (!number)
            expected("a finite number");
        check_number(*number, keyword, text, value.position);
        break;
    }
    case ValueKind::Choice:
        if (std::ranges::find(keyword.choices, text) == keyword.choices.end()) {
            std::string list;
            for (const std::string& choice : keyword.choices)
                list += (list.empty() ? "" : ", ") + ("\"" + choice + "\"");
            expected("one of " + list);
        }
        break;
    case ValueKind::IntegerList:
        for (const std::string& piece : split_joined(text)) {
            const auto number = parse_long(piece);
            if (!number && !piece.empty())
                fail("\"" + keyword.name + "\" holds \"" + piece + "\"; expected whole numbers joined by +", value.position);
            if (number)
                check_number(static_cast<double>(*number), keyword, piece, value.position);
        }
        break;
    case ValueKind::RealList:
        for (const std::string& piece : split_joined_numbers(text)) {
            const auto number = parse_double(piece);
            if (!number)
                fail("\"" + keyword.name + "\" holds \"" + piece + "\"; expected finite numbers joined by +", value.position);
            check_number(*number, keyword, piece, value.position);
        }
        break;
    default:
        break;
    }
}

/// Numbers and flags hold no words: one behind them is a keyword that is unknown or was given before.
void check_words(const Verb& verb, const Keyword& keyword, const Statement& statement, std::size_t begin, std::size_t end)
{
    switch (keyword.kind) {
    case ValueKind::Flag:
    case ValueKind::Integer:
    case ValueKind::Real:
    case ValueKind::IntegerList:
    case ValueKind::RealList:
        break;
    default:
        return;
    }
    for (std::size_t i = begin + 1; i < end; ++i) {
        const Word& word = statement.words[i];
        const bool begins_with_letter = (word.text[0] >= 'a' && word.text[0] <= 'z') || (word.text[0] >= 'A' && word.text[0] <= 'Z');
        if (word.quoted || !begins_with_letter || parse_double(word.text, NonFinite::Accept))
            continue;
        if (verb.keyword(word.text))
            fail("\"" + word.text + "\" is given twice", word.position);
        fail(title(verb) + " has no keyword \"" + word.text + "\"; usage: " + verb.usage(), word.position);
    }
}

/// Reads the words behind the verb into values.
Values read_values(const Verb& verb, const Statement& statement, std::size_t first)
{
    const auto& words = statement.words;
    Values values;
    const auto declared = [&](const Word& word) -> const Keyword* {
        if (word.quoted)
            return nullptr;
        const Keyword* keyword = verb.keyword(word.text);
        return keyword && !keyword->positional ? keyword : nullptr;
    };
    const auto take = [&](const Keyword& keyword, std::size_t begin) {
        std::size_t end = begin;
        while (end < words.size()) {
            const Keyword* next = declared(words[end]);
            if (next && next != &keyword && !values.contains(next->name))
                break;
            ++end;
        }
        check_words(verb, keyword, statement, begin, end);
        values[keyword.name] = {value_of_words(statement, begin, end), position_behind(statement, begin)};
        check_value(keyword, values[keyword.name]);
        return end;
    };

    std::size_t at = first;
    for (const Keyword& keyword : verb.keywords) {
        if (!keyword.positional)
            continue;
        const bool present = at < words.size() && !declared(words[at]);
        if (!present && keyword.required)
            fail(title(verb) + " lacks its " + keyword.name + "; usage: " + verb.usage(), position_behind(statement, at));
        if (present)
            at = take(keyword, at);
    }
    while (at < words.size()) {
        const Keyword* keyword = declared(words[at]);
        if (!keyword) {
            fail(title(verb) + " has no keyword \"" + words[at].text + "\"; usage: " + verb.usage(), words[at].position);
        }
        values[keyword->name]; // given from here on
        at = take(*keyword, at + 1);
    }
    for (const Keyword& keyword : verb.keywords) {
        if (keyword.required && !values.contains(keyword.name))
            fail(title(verb) + " lacks \"" + keyword.name + "\"; usage: " + verb.usage(), statement.position);
    }
    return values;
}

/// Position of the object type's word when the statement speaks to an object ("lodex on SGrid ...", "lodex SGrid ...").
std::optional<std::size_t> object_type_word(const Statement& statement)
{
    const auto& words = statement.words;
    const VerbRegistry& verbs = VerbRegistry::instance();
    if (words.size() > 1 && !words[1].quoted && words[1].text == "on") {
        if (words.size() < 3)
            fail("expected a type of object behind \"on\"", words[1].position);
        if (words[2].quoted || !verbs.is_object_type(words[2].text))
            fail("there is no type of object \"" + words[2].text + "\"", words[2].position);
        return 2;
    }
    if (words.size() > 1 && !words[1].quoted && verbs.is_object_type(words[1].text))
        return 1;
    return std::nullopt;
}

struct VerbPlace {
    const Verb* verb = nullptr;
    std::size_t first_value = 0; ///< word behind the verb
};

void check_start(const Statement& statement)
{
    const auto& words = statement.words;
    if (words[0].quoted || words[0].text != "lodex")
        fail("a statement begins with \"lodex\", not with \"" + words[0].text + "\"", words[0].position);
    if (words.size() < 2)
        fail("expected a verb behind \"lodex\"", words[0].position);
}

VerbPlace global_verb(const Statement& statement)
{
    std::size_t length = 0;
    const Verb* verb = VerbRegistry::instance().match({}, statement.words, 1, length);
    if (!verb) {
        const Word& word = statement.words[1];
        // "create foo": say what the word before is known for.
        std::string known;
        for (const Verb* other : VerbRegistry::instance().verbs()) {
            if (other->object_type.empty() && other->name.starts_with(word.text + " "))
                known += (known.empty() ? "" : ", ") + ("\"" + other->name + "\"");
        }
        fail("there is no verb \"" + word.text + (known.empty() ? "\"" : "\" alone; there is " + known), word.position);
    }
    return {verb, 1 + length};
}

/// Places at which a verb of the type may begin, behind a name of at least one word.
std::vector<std::size_t> verb_places(const Statement& statement, std::size_t type_word)
{
    std::vector<std::size_t> places;
    std::size_t length = 0;
    for (std::size_t i = type_word + 2; i < statement.words.size(); ++i) {
        if (VerbRegistry::instance().match(statement.words[type_word].text, statement.words, i, length))
            places.push_back(i);
    }
    return places;
}

/// A name that grows in place, so that looking up all beginnings of a long statement copies none of them.
class GrowingName : public Lodex::CString {
public:
    void operator+=(std::string_view more) { text_ += more; }
};

/// Calls f with what words [type_word + 1, behind) spell, for behind = type_word + 2, ... up to the end.
template <class F> void each_name(const Statement& statement, std::size_t type_word, F f)
{
    GrowingName name;
    for (std::size_t i = type_word + 1; i < statement.words.size(); ++i) {
        const Word& word = statement.words[i];
        if (i > type_word + 1)
            name += std::string_view(statement.text).substr(statement.words[i - 1].end, word.begin - statement.words[i - 1].end);
        name += word.text;
        f(name, i + 1);
    }
}

[[noreturn]] void no_verb(const Statement& statement, std::size_t type_word)
{
    const std::string& type = statement.words[type_word].text;
    if (type_word + 1 >= statement.words.size())
        fail("expected the name of an object and a verb behind \"" + type + "\"", statement.words[type_word].position);
    // Where the name ends, the catalogue knows, unless an earlier statement has yet to make the object.
    const Lodex::CString type_name(type);
    std::size_t verb_word = 0;
    each_name(statement, type_word, [&](const Lodex::CString& name, std::size_t behind) {
        if (Lodex::GeobaseLib::instance()->find(name, type_name))
            verb_word = behind;
    });
    if (verb_word == statement.words.size() || statement.words.size() == type_word + 2)
        fail("expected a verb behind the name of the " + type, statement.words.back().position);
    if (verb_word > 0)
        fail("there is no verb \"" + statement.words[verb_word].text + "\" of " + type,
             statement.words[verb_word].position);
    fail("no verb of " + type + " stands behind the name in \"" +
             value_of_words(statement, type_word + 1, statement.words.size()) + "\"",
         statement.words[type_word + 2].position);
}

} // namespace

void check_statement(const Statement& statement)
{
    check_start(statement);
    const auto type_word = object_type_word(statement);
    if (!type_word) {
        const VerbPlace place = global_verb(statement);
        (void)read_values(*place.verb, statement, place.first_value);
        return;
    }
    const std::vector<std::size_t> places = verb_places(statement, *type_word);
    if (places.empty())
        no_verb(statement, *type_word);
    // Where the name ends depends on the catalogue; with one candidate the rest can be checked now.
    if (places.size() == 1) {
        std::size_t length = 0;
        const Verb* verb = VerbRegistry::instance().match(statement.words[*type_word].text, statement.words, places[0], length);
        (void)read_values(*verb, statement, places[0] + length);
    }
}

Call bind_statement(const Statement& statement)
{
    check_start(statement);
    const auto& words = statement.words;
    Lodex::GeobaseLib* catalogue = Lodex::GeobaseLib::instance();
    Lodex::GObj* object = nullptr;
    VerbPlace place;

    if (const auto type_word = object_type_word(statement)) {
        const std::string& type = words[*type_word].text;
        const std::vector<std::size_t> places = verb_places(statement, *type_word);
        if (places.empty())
            no_verb(statement, *type_word);
        std::size_t verb_word = 0;
        auto next = places.begin();
        const Lodex::CString type_name(type);
        each_name(statement, *type_word, [&](const Lodex::CString& name, std::size_t behind) {
            if (next == places.end() || *next != behind)
                return;
            ++next;
            if (Lodex::GObj* found = catalogue->find(name, type_name)) {
                object = found;
                verb_word = behind;
            }
        });
        if (object) {
            std::size_t length = 0;
            place.verb = VerbRegistry::instance().match(type, words, verb_word, length);
            place.first_value = verb_word + length;
        }
        if (!object) {
            const std::string name = value_of_words(statement, *type_word + 1, places.front());
            fail("there is no " + type + " \"" + name + "\"", words[*type_word + 1].position);
        }
    } else {
        place = global_verb(statement);
    }

    Values values = read_values(*place.verb, statement, place.first_value);
    std::vector<std::string_view> keyword_words;
    for (const Keyword& keyword : place.verb->keywords) {
        if (!keyword.positional)
            keyword_words.push_back(keyword.name);
    }
    for (const Keyword& keyword : place.verb->keywords) {
        const auto it = values.find(keyword.name);
        if (it == values.end() || it->second.text.empty())
            continue;
        const Call::Value& value = it->second;
        if (keyword.kind == ValueKind::NewName || keyword.kind == ValueKind::ItemName) {
            if (const auto problem = check_object_name(value.text, keyword_words))
                fail("\"" + value.text + "\" cannot be a name: " + *problem, value.position);
            if (keyword.kind == ValueKind::NewName && catalogue->is_name_used(value.text))
                fail("the name \"" + value.text + "\" is taken", value.position);
        }
        if (keyword.kind == ValueKind::Object && !catalogue->find(value.text, keyword.object_type)) {
            fail("there is no " + (keyword.object_type.empty() ? std::string("object") : keyword.object_type) + " \"" +
                     value.text + "\"",
                 value.position);
        }
    }
    return Call(*place.verb, std::move(values), object);
}

} // namespace lodex
