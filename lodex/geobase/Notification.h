#pragma once

#include <algorithm>
#include <array>
#include <span>
#include <vector>

namespace lodex {

/// One round of calls to the observers of a subject, during which an observer may attach or detach observers, start
/// another round or destroy the subject. Observers attached during the round are not called, detached ones no more.
template <class Subject> class Notification {
public:
    explicit Notification(const Subject& subject) : subject_(&subject), outer_(innermost_) { innermost_ = this; }
    ~Notification() { innermost_ = outer_; }
    Notification(const Notification&) = delete;
    Notification& operator=(const Notification&) = delete;

    /// False once the subject has been destroyed.
    [[nodiscard]] bool alive() const { return subject_ != nullptr; }

    /// Calls call(observer) for each of the subject's observers in order.
    template <class Observer, class Call> void tell(const std::vector<Observer*>& observers, Call call)
    {
        // What is told has happened already: few observers, the usual case, are told without asking for memory.
        std::array<Observer*, 16> few;
        std::vector<Observer*> many;
        if (observers.size() > few.size())
            many = observers;
        else
            std::ranges::copy(observers, few.begin());
        const std::span<Observer* const> round(many.empty() ? few.data() : many.data(), observers.size());
        for (Observer* observer : round) {
            if (!alive())
                return;
            if (std::ranges::find(observers, observer) != observers.end())
                call(observer);
        }
    }

    /// To be called by the subject's destructor.
    static void subject_gone(const Subject& subject)
    {
        for (Notification* round = innermost_; round; round = round->outer_) {
            if (round->subject_ == &subject)
                round->subject_ = nullptr;
        }
    }

private:
    static inline thread_local Notification* innermost_ = nullptr;

    const Subject* subject_;
    Notification* outer_;
};

} // namespace lodex
