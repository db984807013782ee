#pragma once
// Collects the trace, with the given configuration, for the life of the
// object: each line with its group and level, so that a test pins the level
// a site engineer would read a text at, not only the words.

#include "ose/Trace.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

class TraceCapture {
public:
    struct Line {
        std::string where;
        std::string group;
        unsigned level;
        std::string file;
        int line;
        std::string text;
    };

    explicit TraceCapture(const std::string& config)
    {
        ose::Trace::setSink([this](const ose::TraceRecord& record) {
            m_lines.push_back({std::string(record.where), std::string(record.group), record.level,
                               std::string(record.file), record.line, std::string(record.text)});
        });
        EXPECT_TRUE(ose::Trace::configure(config));
    }
    ~TraceCapture()
    {
        ose::Trace::reset();
        ose::Trace::setSink({});
    }
    TraceCapture(const TraceCapture&) = delete;
    TraceCapture& operator=(const TraceCapture&) = delete;

    const std::vector<Line>& lines() const { return m_lines; }

    // Every line as the trace prints it.
    std::string text() const
    {
        std::string all;
        for (const Line& line : m_lines)
            all += line.where + " " + line.group + " " + std::to_string(line.level) + " " + line.file + ":" +
                   std::to_string(line.line) + " " + line.text + "\n";
        return all;
    }
    bool contains(const std::string& part) const { return text().find(part) != std::string::npos; }
    // Occurrences of `part` in text().
    std::size_t count(const std::string& part) const
    {
        const std::string all = text();
        std::size_t found = 0;
        for (std::size_t at = all.find(part); at != std::string::npos; at = all.find(part, at + part.size())) ++found;
        return found;
    }
    // Lines of exactly this group, level and text.
    std::size_t count(const std::string& group, unsigned level, const std::string& text) const
    {
        std::size_t found = 0;
        for (const Line& line : m_lines)
            if (line.group == group && line.level == level && line.text == text) ++found;
        return found;
    }
    // Texts of the lines of one group and level, in order.
    std::vector<std::string> texts(const std::string& group, unsigned level) const
    {
        std::vector<std::string> found;
        for (const Line& line : m_lines)
            if (line.group == group && line.level == level) found.push_back(line.text);
        return found;
    }

private:
    std::vector<Line> m_lines;
};
