#pragma once
// Closed-loop scenarios leave their plant's recording, for scripts/plot-run,
// in the folder SSC_RECORD_DIR names, as TEST.csv; without it nothing is
// written.

#include "sim/Plant.h"
#include "sim/PlantRecorder.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <memory>
#include <string>

inline void recordScenarioIfAsked(sim::Plant& plant)
{
    const char* dir = std::getenv("SSC_RECORD_DIR");
    if (dir == nullptr) return;
    auto recorder = std::make_unique<sim::PlantRecorder>();
    const std::string path =
        std::string(dir) + "/" + ::testing::UnitTest::GetInstance()->current_test_info()->name() + ".csv";
    std::string error;
    if (recorder->open(path, error)) plant.setRecorder(std::move(recorder));
    else ADD_FAILURE() << error;
}
