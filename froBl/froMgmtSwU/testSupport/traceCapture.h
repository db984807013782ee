#pragma once
// Sends the trace to a file for the life of the object, so that a test can
// check that a refusal was traced.

#include "ose/Trace.h"

#include <cstdio>
#include <fstream>
#include <sstream>
#include <string>
#include <unistd.h>

class traceCapture {
public:
    traceCapture() : m_path("/tmp/ssc_fro_trace_" + std::to_string(getpid()) + ".log")
    {
        std::remove(m_path.c_str());
        ose::Trace::setOutputFile(m_path);
    }
    ~traceCapture()
    {
        ose::Trace::setOutputStderr();
        std::remove(m_path.c_str());
    }
    std::string text() const
    {
        std::ifstream file(m_path);
        std::stringstream content;
        content << file.rdbuf();
        return content.str();
    }
    bool contains(const std::string& words) const { return text().find(words) != std::string::npos; }

private:
    std::string m_path;
};
