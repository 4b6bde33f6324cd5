#include "annotations/LabelFormat.h"
#include "shell/Text.h"

#include <algorithm>
#include <functional>
#include <queue>
#include <set>
#include <utility>

/// Praat's TextGrid: tiers of intervals that fill the whole time, and tiers of points. An interval without text is a
/// gap. What overlaps needs tiers of its own.
namespace Zantrix::Cli {

namespace {

/// Annotations that can stand in one tier, in order of time.
using Tier = std::vector<const SampledLabel*>;

/// Puts each interval into the first tier that is free where it starts.
std::vector<Tier> layOutIntervals(const std::vector<const SampledLabel*>& intervals) {
    using Busy = std::pair<std::uint64_t, std::size_t>;  // until when, which tier
    std::vector<Tier> tiers(1);
    std::priority_queue<Busy, std::vector<Busy>, std::greater<>> busy;
    std::set<std::size_t> free = {0};
    for (const SampledLabel* interval : intervals) {
        for (; !busy.empty() && busy.top().first <= interval->start; busy.pop()) {
            free.insert(busy.top().second);
        }
        if (free.empty()) {
            free.insert(tiers.size());
            tiers.emplace_back();
        }
        const std::size_t tier = *free.begin();
        free.erase(free.begin());
        tiers[tier].push_back(interval);
        busy.emplace(interval->stop, tier);
    }
    return tiers;
}

/// A tier holds one point at a time at most.
std::vector<Tier> layOutPoints(const std::vector<const SampledLabel*>& points) {
    std::vector<Tier> tiers;
    std::size_t tier = 0;
    for (std::size_t i = 0; i < points.size(); ++i) {
        tier = i > 0 && points[i]->start == points[i - 1]->start ? tier + 1 : 0;
        tiers.resize(std::max(tiers.size(), tier + 1));
        tiers[tier].push_back(points[i]);
    }
    return tiers;
}

std::string quoted(const std::string& text) {
    std::string result = "\"";
    for (const char c : text) {
        result += c == '"' ? "\"\"" : std::string(1, c);
    }
    return result + '"';
}

class Writer {
public:
    explicit Writer(const Recording& recording) : m_recording(recording), m_strEnd(time(recording.samples)) {}

    std::string write() {
        std::vector<const SampledLabel*> intervals;
        std::vector<const SampledLabel*> points;
        for (std::size_t i = 0; i < m_recording.annotations.size(); ++i) {
            const SampledLabel& annotation = m_recording.annotations[i];
            check(i, annotation);
            (annotation.start == annotation.stop ? points : intervals).push_back(&annotation);
        }
        const auto byStart = [](const SampledLabel* a, const SampledLabel* b) { return a->start < b->start; };
        std::stable_sort(intervals.begin(), intervals.end(), byStart);
        std::stable_sort(points.begin(), points.end(), byStart);
        const std::vector<Tier> intervalTiers = layOutIntervals(intervals);
        const std::vector<Tier> pointTiers = layOutPoints(points);
        m_strText = "File type = \"ooTextFile\"\nObject class = \"TextGrid\"\n\nxmin = 0\nxmax = " + m_strEnd +
                    "\ntiers? <exists>\nsize = " + std::to_string(intervalTiers.size() + pointTiers.size()) +
                    "\nitem []:\n";
        for (std::size_t i = 0; i < intervalTiers.size(); ++i) {
            beginTier("IntervalTier", "annotations", i);
            writeIntervals(intervalTiers[i]);
        }
        for (std::size_t i = 0; i < pointTiers.size(); ++i) {
            beginTier("TextTier", "points", i);
            writePoints(pointTiers[i]);
        }
        return std::move(m_strText);
    }

private:
    std::string time(std::uint64_t sample) const { return timeOfSample(sample, m_recording.rate); }

    void check(std::size_t index, const SampledLabel& annotation) const {
        const std::string name = nameOf(index, annotation.label);
        if (!isUtf8(annotation.label)) {
            throw LabelError(name + ": its label is not UTF-8, which a TextGrid cannot hold");
        }
        if (annotation.label.empty() && annotation.start < annotation.stop) {
            throw LabelError(name + ": a TextGrid takes an interval without a label for a gap");
        }
        if (annotation.stop > m_recording.samples) {
            throw LabelError(name + ": it goes beyond the end of the audio, where a TextGrid ends");
        }
    }

    void beginTier(const char* kind, const std::string& name, std::size_t index) {
        m_strText += "    item [" + std::to_string(++m_uiTiers) + "]:\n        class = \"" + kind +
                     "\"\n        name = \"" + name + (index > 0 ? ' ' + std::to_string(index + 1) : "") +
                     "\"\n        xmin = 0\n        xmax = " + m_strEnd + '\n';
    }

    void writeIntervals(const Tier& tier) {
        std::string text;
        std::size_t count = 0;
        const auto add = [&](std::uint64_t start, std::uint64_t stop, const std::string& label) {
            if (start < stop) {
                text += "        intervals [" + std::to_string(++count) + "]:\n            xmin = " + time(start) +
                        "\n            xmax = " + time(stop) + "\n            text = " + quoted(label) + '\n';
            }
        };
        std::uint64_t end = 0;
        for (const SampledLabel* interval : tier) {
            add(end, interval->start, "");
            add(interval->start, interval->stop, interval->label);
            end = interval->stop;
        }
        add(end, m_recording.samples, "");
        m_strText += "        intervals: size = " + std::to_string(count) + '\n' + text;
    }

    void writePoints(const Tier& tier) {
        m_strText += "        points: size = " + std::to_string(tier.size()) + '\n';
        for (std::size_t i = 0; i < tier.size(); ++i) {
            m_strText += "        points [" + std::to_string(i + 1) +
                         "]:\n            number = " + time(tier[i]->start) +
                         "\n            mark = " + quoted(tier[i]->label) + '\n';
        }
    }

    const Recording& m_recording;
    const std::string m_strEnd;
    std::string m_strText;
    std::size_t m_uiTiers = 0;
};

}  // namespace

std::string writeTextGrid(const Recording& recording) {
    return Writer(recording).write();
}

}  // namespace Zantrix::Cli
