#include "Verb.h"

#include "Lists.h"
#include "lodex/utils/Numbers.h"

#include <Lodex/geobase/GeobaseLib.h>
#include <Lodex/utils/Logger.h>

#include <nlohmann/json.hpp>

#include <algorithm>
#include <cctype>
#include <cmath>
#include <sstream>

namespace lodex {

std::string_view to_text(ValueKind kind)
{
    switch (kind) {
    case ValueKind::Text: return "text";
    case ValueKind::Path: return "path";
    case ValueKind::NewName: return "new name";
    case ValueKind::ItemName: return "item name";
    case ValueKind::Object: return "object";
    case ValueKind::Flag: return "flag";
    case ValueKind::Integer: return "integer";
    case ValueKind::Real: return "real";
    case ValueKind::Choice: return "choice";
    case ValueKind::NameList: return "names";
    case ValueKind::IntegerList: return "integers";
    case ValueKind::RealList: return "reals";
    }
    return "text";
}

const Keyword* Verb::keyword(std::string_view keyword_name) const
{
    const auto it = std::ranges::find(keywords, keyword_name, &Keyword::name);
    return it == keywords.end() ? nullptr : &*it;
}

namespace {

std::string upper(std::string text)
{
    std::ranges::transform(text, text.begin(), [](unsigned char c) { return static_cast<char>(std::toupper(c)); });
    return text;
}

std::string placeholder(const Keyword& keyword)
{
    switch (keyword.kind) {
    case ValueKind::Path: return "\"PATH\"";
    case ValueKind::Flag: return "0|1";
    case ValueKind::Integer: return "N";
    case ValueKind::Real: return "X";
    case ValueKind::IntegerList: return "N+N...";
    case ValueKind::RealList: return "X+X...";
    case ValueKind::NameList: return "NAME+NAME...";
    case ValueKind::Choice: {
        std::string text;
        for (const std::string& choice : keyword.choices)
            text += (text.empty() ? "" : "|") + choice;
        return text;
    }
    case ValueKind::Text: return keyword.positional ? upper(keyword.name) : "VALUE";
    default: return keyword.positional ? upper(keyword.name) : "NAME";
    }
}

} // namespace

std::string Verb::usage() const
{
    std::string text = object_type.empty() ? "lodex " + name : "lodex on " + object_type + " NAME " + name;
    for (const Keyword& declared : keywords) {
        const std::string part = declared.positional ? placeholder(declared) : declared.name + " " + placeholder(declared);
        text += declared.required ? " " + part : " [" + part + "]";
    }
    return text;
}

VerbRegistry& VerbRegistry::instance()
{
    static VerbRegistry registry;
    return registry;
}

void VerbRegistry::add(Verb verb)
{
    auto key = std::pair(verb.object_type, verb.name);
    if (!verbs_.try_emplace(std::move(key), std::move(verb)).second)
        throw std::logic_error("a verb is declared twice");
}

std::vector<const Verb*> VerbRegistry::verbs() const
{
    std::vector<const Verb*> list;
    for (const auto& [key, verb] : verbs_)
        list.push_back(&verb);
    return list;
}

const Verb* VerbRegistry::find(std::string_view object_type, std::string_view name) const
{
    const auto it = verbs_.find(std::pair(std::string(object_type), std::string(name)));
    return it == verbs_.end() ? nullptr : &it->second;
}

bool VerbRegistry::is_object_type(std::string_view word) const
{
    return !word.empty() && std::ranges::any_of(verbs_, [word](const auto& entry) { return entry.first.first == word; });
}

const Verb* VerbRegistry::match(std::string_view object_type, const std::vector<Word>& words, std::size_t first,
                                std::size_t& length) const
{
    constexpr std::size_t longest_verb = 4;
    const Verb* best = nullptr;
    std::string name;
    for (std::size_t i = first; i < words.size() && i < first + longest_verb && !words[i].quoted; ++i) {
        name += (i > first ? " " : "") + words[i].text;
        if (const Verb* verb = find(object_type, name)) {
            best = verb;
            length = i - first + 1;
        }
    }
    return best;
}

std::string VerbRegistry::to_json() const
{
    using nlohmann::ordered_json;
    ordered_json list = ordered_json::array();
    for (const auto& [key, verb] : verbs_) {
        ordered_json keywords = ordered_json::array();
        for (const Keyword& declared : verb.keywords) {
            ordered_json entry{{"name", declared.name},
                               {"type", to_text(declared.kind)},
                               {"meaning", declared.meaning},
                               {"required", declared.required},
                               {"may_be_empty", declared.may_be_empty},
                               {"positional", declared.positional}};
            if (!declared.unit.empty())
                entry["unit"] = declared.unit;
            if (!declared.default_value.empty())
                entry["default"] = declared.default_value;
            if (!declared.choices.empty())
                entry["choices"] = declared.choices;
            if (!declared.object_type.empty())
                entry["object_type"] = declared.object_type;
            if (std::isfinite(declared.min))
                entry["min"] = declared.min;
            if (std::isfinite(declared.max))
                entry["max"] = declared.max;
            keywords.push_back(std::move(entry));
        }
        list.push_back({{"name", verb.name},
                        {"object_type", verb.object_type},
                        {"summary", verb.summary},
                        {"usage", verb.usage()},
                        {"journalled", verb.journalled},
                        {"keywords", std::move(keywords)}});
    }
    return ordered_json{{"verbs", std::move(list)}}.dump(2);
}

namespace {

/// ", required, default 0": what help and the reference page say of a keyword behind its type.
std::string rules_of(const Keyword& keyword)
{
    std::string text = keyword.required ? ", required" : "";
    if (!keyword.default_value.empty())
        text += ", default " + keyword.default_value;
    if (keyword.may_be_empty)
        text += ", may be empty";
    return text;
}

} // namespace

std::string VerbRegistry::to_markdown() const
{
    std::ostringstream out;
    for (const auto& [key, verb] : verbs_) {
        out << "## " << (verb.object_type.empty() ? verb.name : verb.object_type + ": " + verb.name) << "\n\n" << verb.summary
            << (verb.journalled ? "" : " Not journalled.") << "\n\n```\n" << verb.usage() << "\n```\n\n";
        if (verb.keywords.empty())
            continue;
        out << "| keyword | value | meaning |\n|---|---|---|\n";
        for (const Keyword& declared : verb.keywords) {
            out << "| `" << declared.name << "` | " << to_text(declared.kind);
            if (!declared.unit.empty())
                out << " in " << declared.unit;
            out << rules_of(declared);
            out << " | " << declared.meaning << " |\n";
        }
        out << '\n';
    }
    return out.str();
}

std::string VerbRegistry::help(std::string_view name) const
{
    std::ostringstream out;
    for (const auto& [key, verb] : verbs_) {
        if (name.empty()) {
            out << (verb.object_type.empty() ? verb.name : "on " + verb.object_type + " ... " + verb.name) << ": "
                << verb.summary << '\n';
            continue;
        }
        if (verb.name != name)
            continue;
        out << verb.usage() << '\n' << verb.summary << '\n';
        for (const Keyword& declared : verb.keywords) {
            out << "  " << declared.name << " (" << to_text(declared.kind);
            if (!declared.unit.empty())
                out << ", " << declared.unit;
            out << rules_of(declared);
            out << "): " << declared.meaning << '\n';
        }
    }
    return out.str();
}

std::string Call::text(std::string_view keyword) const
{
    if (const auto it = values_.find(keyword); it != values_.end())
        return it->second.text;
    const Keyword* declared = verb_.keyword(keyword);
    return declared ? declared->default_value : std::string();
}

long Call::integer(std::string_view keyword) const
{
    return parse_long(text(keyword)).value_or(0);
}

double Call::real(std::string_view keyword) const
{
    return parse_double(text(keyword)).value_or(0);
}

std::vector<long> Call::integers(std::string_view keyword) const
{
    std::vector<long> numbers;
    for (const std::string& piece : split_joined(text(keyword))) {
        if (const auto number = parse_long(piece))
            numbers.push_back(*number);
    }
    return numbers;
}

std::vector<double> Call::reals(std::string_view keyword) const
{
    std::vector<double> numbers;
    for (const std::string& piece : split_joined_numbers(text(keyword))) {
        if (const auto number = parse_double(piece))
            numbers.push_back(*number);
    }
    return numbers;
}

Lodex::GObj* Call::object_of(std::string_view keyword) const
{
    const Keyword* declared = verb_.keyword(keyword);
    return Lodex::GeobaseLib::instance()->find(text(keyword), declared ? Lodex::CString(declared->object_type) : "");
}

void Call::fail(const std::string& message, std::string_view keyword) const
{
    if (const auto it = values_.find(keyword); it != values_.end())
        throw CommandError(message, it->second.position);
    throw CommandError(message);
}

void Call::info(const std::string& text)
{
    Lodex::Logger::log(Lodex::LogLevel::Info, text + "\n");
}

void Call::warn(const std::string& text)
{
    warnings_.push_back(text);
    Lodex::Logger::log(Lodex::LogLevel::Warning, text + "\n");
}

bool Call::progress(double done) const
{
    return !progress_ || progress_->set_done(done);
}

} // namespace lodex
