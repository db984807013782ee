#pragma once
// The load module's calls to the node platform's RPU server. Each finds the
// server "Vanto_cliServer_proc" (waiting for it if the platform is not up
// yet) and sends one signal with the load module's identity; the answers
// come to the caller's queue.

#include <array>
#include <cstdint>

#include "platform/VantoCliSignals.h"

// The identity of this load module: the first 30 bytes of the environment
// variable OSE_LM_IDENTITY, zero-filled; all zero when it is not set.
std::array<char, vanto_cli::kIdentitySize> VantoCli_identity();

void VantoCli_getRpuReq();
void VantoCli_registerRpuReq(std::uint32_t rpuId);
void VantoCli_restartPgmReq(std::uint32_t rpuId);
