#pragma once

#include <Lodex/utils/Logger.h>

#include <string>
#include <utility>
#include <vector>

/// Collects what is logged during its life.
class MessageList : public Lodex::LogSink {
public:
    MessageList() { Lodex::Logger::add_sink(this); }
    ~MessageList() override { Lodex::Logger::remove_sink(this); }
    MessageList(const MessageList&) = delete;
    MessageList& operator=(const MessageList&) = delete;

    void message(Lodex::LogLevel level, const Lodex::CString& text) override { entries.emplace_back(level, text.str()); }

    [[nodiscard]] std::vector<std::string> of(Lodex::LogLevel level) const
    {
        std::vector<std::string> texts;
        for (const auto& [entry_level, text] : entries) {
            if (entry_level == level)
                texts.push_back(text);
        }
        return texts;
    }
    void clear() { entries.clear(); }

    std::vector<std::pair<Lodex::LogLevel, std::string>> entries;
};
