#pragma once
// The object layer's management side: the management client's interface
// and the platform's transactions.

class SupSysMgmtApi {
public:
    virtual ~SupSysMgmtApi() = default;
    virtual void init() = 0;
};
