#pragma once
// The singletons of the object process. Each is made on first use and lives
// as long as the process that made it: a restart of the load module kills
// the process and the next one starts from nothing, as a reloaded program
// would. The process's entry holds a scope; instance() functions look their
// object up in the scope of the running process. Code that runs outside any
// scope (tools, tests) shares one scope that is never destroyed.

#include "ose/Types.h"

#include <functional>
#include <map>
#include <memory>
#include <typeindex>
#include <utility>
#include <vector>

class SupSysSingletons {
public:
    // Binds the scope to the running process until it is destroyed.
    SupSysSingletons();
    // Destroys the singletons in the reverse order of their making.
    ~SupSysSingletons();
    SupSysSingletons(const SupSysSingletons&) = delete;
    SupSysSingletons& operator=(const SupSysSingletons&) = delete;

    // The object of type T of the running process's scope, made by `make`
    // the first time.
    template <class T, class Make>
    static T& get(Make&& make)
    {
        SupSysSingletons& scope = current();
        if (void* found = scope.find(typeid(T))) return *static_cast<T*>(found);
        std::unique_ptr<T> made = make();
        T& object = *made;
        scope.keep(typeid(T), &object, [p = made.release()]() { delete p; });
        return object;
    }

    template <class T>
    static T& get()
    {
        return get<T>([] { return std::make_unique<T>(); });
    }

private:
    struct Entry {
        std::type_index type;
        void* object;
        std::function<void()> destroy;
    };

    struct Shared {};
    explicit SupSysSingletons(Shared) {}

    static SupSysSingletons& current();
    void* find(std::type_index type) const;
    void keep(std::type_index type, void* object, std::function<void()> destroy);

    ose::PROCESS m_process = 0;
    std::vector<Entry> m_made;
};
