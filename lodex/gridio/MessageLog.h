#pragma once

#include <lodex/utils/FileError.h>

#include <map>
#include <string>
#include <vector>

namespace lodex {

/// Collects messages of a reader or writer; of each kind only the first few are kept, the others are counted.
class MessageLog {
public:
    static constexpr std::int64_t most_of_a_kind = 20;

    /// kind: a short fixed phrase, "keywords kept as text"; it ends the line that counts the ones left out.
    void add(const std::string& kind, Message message)
    {
        Kind& entry = kinds_[kind];
        if (++entry.count <= most_of_a_kind) {
            messages_.push_back(std::move(message));
        } else {
            entry.level = message.level;
            entry.file = std::move(message.file);
        }
    }

    /// All messages, then one line for each kind that had more.
    [[nodiscard]] std::vector<Message> take()
    {
        for (auto& [kind, entry] : kinds_) {
            if (entry.count > most_of_a_kind) {
                messages_.push_back({entry.level, entry.file, 0,
                                     "and " + std::to_string(entry.count - most_of_a_kind) + " more " + kind});
            }
        }
        kinds_.clear();
        return std::move(messages_);
    }

private:
    struct Kind {
        std::int64_t count = 0;
        Message::Level level = Message::Level::Info;
        std::string file;
    };

    std::vector<Message> messages_;
    std::map<std::string, Kind> kinds_;
};

} // namespace lodex
