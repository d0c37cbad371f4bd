#pragma once

namespace lodex {

/// Holds a value of static lifetime that is never destroyed, so that destructors of other statics may still use it at
/// exit: `static Immortal<Registry> registry;`.
template <class T> class Immortal {
public:
    Immortal() : storage_() {}

    [[nodiscard]] T& get() { return storage_.value; }

private:
    union Storage {
        Storage() : value() {}
        ~Storage() {}
        T value;
    };
    Storage storage_;
};

} // namespace lodex
