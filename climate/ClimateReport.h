#pragma once
// The climate regulation's values as the cabinet interface reports them:
// twenty-one words of the regulator, then one row of eleven words per
// hot-spot sensor (the SCU's left out). Scaled integers; ClimateFacade
// fills it.

#include <array>
#include <cstdint>
#include <vector>

struct ClimateReport {
    // u_f_old, K_I_old, u_f, u_x, U, U_x, T, scu_temp, u_nom, u_bas, u_max,
    // u_x_min, U_x_min, U_x_h, Fan_start, Fan_stop, FlowFactor, U_x_k,
    // u_x_on, u_x_off, k_x.
    static constexpr std::size_t kWords = 21;
    // i_h, e, u, UnitPlace, T_r, u_I, Tau, K, K_I, UnitType, UnitSlotPosition.
    static constexpr std::size_t kRowWords = 11;

    std::array<std::int32_t, kWords> words{};
    std::vector<std::array<std::int32_t, kRowWords>> hotSpots;
};
