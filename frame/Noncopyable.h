#pragma once
// A base without data that forbids copying: objects of the core that hold
// subscriptions, timers or kernel resources must have exactly one owner.

class Noncopyable {
public:
    Noncopyable(const Noncopyable&) = delete;
    Noncopyable& operator=(const Noncopyable&) = delete;

protected:
    Noncopyable() = default;
    ~Noncopyable() = default;
};
