#pragma once
// The frame of the object process: the role handshake, the bring-up of the
// object layer in its fixed order (only with the active role) and the one
// receive loop that hands every signal to its subscribers.

class SupSysCtrlEngine {
public:
    // Never returns.
    [[noreturn]] void start();

private:
    void init();
    [[noreturn]] void receiveLoop();
};

// The entry of the process "support_system_control_thread". Its singletons
// live as long as it does.
void supSysMain();
