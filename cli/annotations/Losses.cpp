#include "annotations/Losses.h"

#include "annotations/ById.h"

#include <algorithm>
#include <string>

namespace Zantrix::Cli {

namespace {

template <typename Items, typename Condition>
std::size_t count(const Items& items, Condition condition) {
    return static_cast<std::size_t>(std::count_if(items.begin(), items.end(), condition));
}

/// Tells of a number of things, unless there is none.
void warn(std::size_t number, const std::string& before, const std::string& what, const std::string& behind,
          Diagnostics& diagnostics) {
    if (number > 0) {
        diagnostics.warning(before + counted(number, what) + behind + " cannot be kept");
    }
}

}  // namespace

void warnOfLostRemains(const ChunkScan& scan, Diagnostics& diagnostics) {
    const ById<ScannedCue> points(scan.points);
    const auto isOrphan = [&](const auto& item) { return points.first(item.id) == nullptr; };
    const auto isShort = [](const ShortChunk& chunk) { return isText(chunk.id); };
    warn(scan.notes.size(), "", "note", " (\"note\" chunks)", diagnostics);
    warn(count(scan.labels, isOrphan), "", "label", " (\"labl\" chunks) without a cue point", diagnostics);
    warn(count(scan.lengths, isOrphan), "", "length", " (\"ltxt\" chunks) without a cue point", diagnostics);
    warn(count(scan.shorts, isShort), "", "chunk", " (\"ltxt\", \"labl\", \"note\") too short to be read", diagnostics);
    warn(scan.unusedCueBytes, "", "byte", " of \"cue \" chunks that belong to no cue point", diagnostics);
}

void warnOfLostDetails(const ChunkScan& scan, bool isLenient, Diagnostics& diagnostics) {
    const ById<ScannedCue> points(scan.points);
    const ById<ScannedLength> lengths(scan.lengths);
    const ById<ScannedText> labels(scan.labels);
    // Only what belongs to a point, and is the last of its kind there: all others are lost as a whole.
    const auto countLengths = [&](bool ScannedLength::*pHas) {
        return count(scan.lengths, [&](const ScannedLength& length) {
            return length.*pHas && lengths.last(length.id) == &length && points.first(length.id) != nullptr;
        });
    };
    const auto countLost = [&](const auto& items, const auto& byId) {
        return count(items,
                     [&](const auto& item) { return byId.last(item.id) != &item && points.first(item.id) != nullptr; });
    };
    const std::string ofLengths = " (\"ltxt\" chunks)";
    warn(countLengths(&ScannedLength::hasText), "the text of ", "length", ofLengths, diagnostics);
    warn(countLengths(&ScannedLength::hasPurpose), "the purpose of ", "length", ofLengths, diagnostics);
    warn(countLengths(&ScannedLength::hasLanguage), "the language of ", "length", ofLengths, diagnostics);
    warn(countLost(scan.lengths, lengths), "", "length", ofLengths + " of a cue point that has another", diagnostics);
    warn(countLost(scan.labels, labels), "", "label", " (\"labl\" chunks) of a cue point that has another",
         diagnostics);
    warn(count(scan.labels,
               [&](const ScannedText& label) {
                   return label.hasRest && labels.last(label.id) == &label && points.first(label.id) != nullptr;
               }),
         "what follows the zero byte in ", "label", " (\"labl\" chunks)", diagnostics);
    if (!isLenient) {
        warn(count(scan.points, [&](const ScannedCue& point) { return points.isRepeated(point); }), "", "cue point",
             " with the number of another", diagnostics);
    }
}

}  // namespace Zantrix::Cli
