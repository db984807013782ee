#pragma once
// Where the climate side subscribes to the other nodes of the site.

#include "cabinet/ExternalNodeObserver.h"

class ExternalNodeCtrlIf {
public:
    virtual ~ExternalNodeCtrlIf() = default;
    // An observer already there is not added twice.
    virtual void addObserver(ExternalNodeObserver* observer) = 0;
    virtual void removeObserver(ExternalNodeObserver* observer) = 0;
};
