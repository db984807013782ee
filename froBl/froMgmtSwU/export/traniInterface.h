#pragma once
// What a commit calls on an object controller: after it was made, before it
// is deleted, after its attributes were set.

class traniInterface {
public:
    virtual void postCreate() = 0;
    virtual void preDelete() = 0;
    virtual void postSet() = 0;
    virtual ~traniInterface() = default;
};
