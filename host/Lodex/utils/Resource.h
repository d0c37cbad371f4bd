#pragma once

namespace Lodex {

/// Reference-counted base. Starts with count 0; the unref() that brings it back to 0 deletes the object.
class Resource {
public:
    void ref() const { ++references_; }
    void unref() const
    {
        if (--references_ <= 0)
            delete this;
    }
    [[nodiscard]] int references() const { return references_; }

    Resource(const Resource&) : references_(0) {}
    Resource& operator=(const Resource&) { return *this; }

protected:
    Resource() = default;
    virtual ~Resource() = default;

private:
    mutable int references_ = 0;
};

/// Holds one reference to a Resource; null is allowed.
template <class T> class Ref {
public:
    Ref() = default;
    Ref(T* object) : object_(object) { acquire(); }
    Ref(const Ref& other) : object_(other.object_) { acquire(); }
    Ref& operator=(const Ref& other)
    {
        if (other.object_)
            other.object_->ref();
        release();
        object_ = other.object_;
        return *this;
    }
    ~Ref() { release(); }

    [[nodiscard]] T* get() const { return object_; }
    T* operator->() const { return object_; }
    T& operator*() const { return *object_; }
    explicit operator bool() const { return object_ != nullptr; }

private:
    void acquire() const
    {
        if (object_)
            object_->ref();
    }
    void release() const
    {
        if (object_)
            object_->unref();
    }
    T* object_ = nullptr;
};

} // namespace Lodex
