#pragma once
// Gives the client-side interface of a server (or the server itself where
// it has none). The result holds a pointer of that interface's type; read it
// with resolveAs, which gives NIL for any other type.

#include <any>

class ServerResolver {
public:
    virtual ~ServerResolver() = default;
    virtual std::any resolve() = 0;
};

template <typename Interface>
Interface* resolveAs(ServerResolver* resolver)
{
    if (resolver == nullptr) return nullptr;
    std::any resolved = resolver->resolve();
    Interface** pointer = std::any_cast<Interface*>(&resolved);
    return pointer != nullptr ? *pointer : nullptr;
}
