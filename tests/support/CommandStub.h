#pragma once

#include <Lodex/interpreter/ICommandStub.h>

#include <initializer_list>
#include <map>
#include <string>
#include <utility>

/// A pending command of keywords with one value each.
class CommandStub : public Lodex::ICommandStub {
public:
    CommandStub() = default;
    CommandStub(std::initializer_list<std::pair<const std::string, std::string>> values) : values_(values) {}

    [[nodiscard]] bool get(const Lodex::CString& key, Lodex::CopyCString& value, int index) const override
    {
        const auto it = values_.find(key.str());
        if (it == values_.end() || index != 0)
            return false;
        value = Lodex::CopyCString(it->second);
        return true;
    }

private:
    std::map<std::string, std::string> values_;
};
