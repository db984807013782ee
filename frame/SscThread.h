#pragma once
// The entry of the core process SSC_THREAD: builds the object graph and runs
// the receive loop, which does not return.

#include "frame/SscPlatformIf.h"

inline constexpr const char* kSscThreadName = "SSC_THREAD";
inline constexpr unsigned kSscThreadPriority = 16;
inline constexpr unsigned kSscThreadStackSize = 10240;

// The load module's identity, printed at start.
inline constexpr const char* kSscProductNumber = "SSC 901 0001";
inline constexpr const char* kSscProductRevision = "R1A";

void sscThreadMain(SscPlatformIf& platform);
