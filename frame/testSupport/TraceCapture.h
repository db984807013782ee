#pragma once
// Sends the trace to a temporary file of this test process, with the given
// configuration, for the life of the object; reads back what was written.

#include "ose/Trace.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <fstream>
#include <sstream>
#include <string>

#include <unistd.h>

class TraceCapture {
public:
    explicit TraceCapture(const std::string& config)
        : m_path(::testing::TempDir() + "trace_" + std::to_string(::getpid()) + ".txt")
    {
        std::remove(m_path.c_str());
        EXPECT_TRUE(ose::Trace::setOutputFile(m_path));
        EXPECT_TRUE(ose::Trace::configure(config));
    }
    ~TraceCapture()
    {
        ose::Trace::reset();
        ose::Trace::setOutputStderr();
        std::remove(m_path.c_str());
    }
    TraceCapture(const TraceCapture&) = delete;
    TraceCapture& operator=(const TraceCapture&) = delete;

    std::string text() const
    {
        std::ifstream in(m_path);
        std::stringstream content;
        content << in.rdbuf();
        return content.str();
    }
    bool contains(const std::string& part) const { return text().find(part) != std::string::npos; }
    std::size_t count(const std::string& part) const
    {
        const std::string all = text();
        std::size_t found = 0;
        for (std::size_t at = all.find(part); at != std::string::npos; at = all.find(part, at + part.size())) ++found;
        return found;
    }

private:
    std::string m_path;
};
