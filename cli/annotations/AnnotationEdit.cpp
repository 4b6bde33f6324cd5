#include "annotations/AnnotationEdit.h"

#include "annotations/Backup.h"
#include "annotations/Losses.h"
#include "annotations/MutedRecords.h"
#include "shell/Interrupt.h"
#include "shell/Output.h"
#include "shell/Text.h"

#include <algorithm>
#include <cerrno>
#include <cmath>
#include <cstring>
#include <iterator>
#include <memory>
#include <tuple>
#include <unistd.h>
#include <utility>

namespace po = boost::program_options;

namespace Zantrix::Cli {

namespace {

// Annotations that a warning names; a count does for the others.
constexpr std::size_t c_uiMaxNamed = 5;

bool isEarlier(const SampledLabel& a, const SampledLabel& b) {
    return std::tie(a.start, a.stop, a.label) < std::tie(b.start, b.stop, b.label);
}

/// What is in `all` and not in `others`, each as often as it is there more often, in order of time.
std::vector<SampledLabel> difference(const std::vector<SampledLabel>& all, const std::vector<SampledLabel>& others) {
    // Mostly an edit is an annotation more or less among many that stay: only what is between needs to be put in order.
    const auto [begin, beginOfOther] = std::mismatch(all.begin(), all.end(), others.begin(), others.end());
    const auto [end, endOfOther] = std::mismatch(all.rbegin(), std::make_reverse_iterator(begin), others.rbegin(),
                                                 std::make_reverse_iterator(beginOfOther));
    std::vector<SampledLabel> list(begin, end.base());
    std::vector<SampledLabel> other(beginOfOther, endOfOther.base());
    std::sort(list.begin(), list.end(), isEarlier);
    std::sort(other.begin(), other.end(), isEarlier);
    std::vector<SampledLabel> result;
    std::set_difference(list.begin(), list.end(), other.begin(), other.end(), std::back_inserter(result), isEarlier);
    return result;
}

std::string secondsOf(double seconds) {
    return shortest(seconds) + " s";
}

}  // namespace

void addEditOptions(po::options_description& description, EditOptions& options) {
    description.add_options()                                                                           //
        ("dry-run,n", po::bool_switch(&options.isDryRun), "show what would change, and write nothing")  //
        ("backup", po::bool_switch(&options.keepsBackup),
         "keep the old file as FILE.bak, or FILE.bak.1 and so on where that exists")  //
        ("lenient", po::bool_switch(&options.read.lenient),
         "edit also a file whose annotations do not fit together: keep what can be saved of them")  //
        ("keep-fillers", po::bool_switch(&options.read.keepFillers),
         "keep annotations \"SF_MIN\" from 0 to 0 s, which stand for gaps among the numbers of cue points");
    addCommonOptions(description, options.log);
}

AnnotationEdit::AnnotationEdit(std::string path, const EditOptions& options, Diagnostics& diagnostics)
    : m_strPath(std::move(path)), m_options(options), m_diagnostics(diagnostics) {}

bool AnnotationEdit::load() {
    if (!loadAnnotated(m_strPath, m_options.read.lenient, m_diagnostics, m_loaded)) {
        return false;
    }
    if (m_loaded.stamp == FileStamp()) {
        m_diagnostics.error("is no regular file, so it cannot be edited");
        return false;
    }
    if (const auto defect = m_loaded.headerDefect()) {
        m_diagnostics.error(*defect + c_szHeaderHint);  // chunks would be put in the midst of the audio
        return false;
    }
    if (!m_loaded.scan->canBeAnnotated()) {
        m_diagnostics.error(m_loaded.obstacle());  // what lenient reading lets pass, for looking only
        return false;
    }
    m_recording = recordingOf(m_loaded, m_options.read, Loops::OnlyOfCues);
    m_before = m_recording.annotations;
    return true;
}

bool AnnotationEdit::append(const std::vector<TimedLabel>& labels, const std::string& source) {
    std::vector<SampledLabel> appended;
    for (const TimedLabel& label : labels) {
        const std::string reason = whyRefused(label);
        if (!reason.empty()) {
            m_diagnostics.error(source + nameOf(appended.size(), label.label) + ' ' + reason);
            return false;
        }
        appended.push_back(toSamples(label, m_recording.rate));
    }
    std::move(appended.begin(), appended.end(), std::back_inserter(m_recording.annotations));
    return true;
}

void AnnotationEdit::clear() {
    m_recording.annotations.clear();
    m_bClearsAll = true;
}

bool AnnotationEdit::save() {
    std::string backup;
    if (isChanged() && !(prepare() && checkWritable() && (m_options.isDryRun || replace(backup)))) {
        return false;
    }
    return report(backup);
}

bool AnnotationEdit::saveCopy(const std::string& path) {
    if (!prepare()) {
        return false;
    }
    if (hasChangedOnDisk()) {
        m_diagnostics.error("it changed since it was read; " + path + " is not written");
        return false;
    }
    const bool isWritten = write(path);
    if (!isWritten) {
        m_diagnostics.error("cannot write " + path + ": " + m_loaded.file.getError());
    }
    return isWritten;
}

bool AnnotationEdit::isChanged() const {
    const bool isOfNone = m_bClearsAll && m_recording.annotations.empty();
    return m_recording.annotations != m_before || (isOfNone && m_loaded.scan->hasAny());
}

std::string AnnotationEdit::whyRefused(const TimedLabel& label) const {
    for (const double time : {label.start, label.stop}) {
        if (!std::isfinite(time) || time < 0.0) {
            return "has the time " + secondsOf(time) + "; times are 0 s or more";
        }
    }
    if (label.start > label.stop) {
        return "starts at " + secondsOf(label.start) + ", after its stop at " + secondsOf(label.stop);
    }
    const SampledLabel sampled = toSamples(label, m_recording.rate);
    if (sampled.start > m_recording.samples) {
        return "starts at " + secondsOf(label.start) + ", beyond the end of the audio at " +
               timeOfSample(m_recording.samples, m_recording.rate) + " s";
    }
    if (label.label.find('\0') != std::string::npos) {
        return "has a zero byte in its label, which would end there";
    }
    if (isFiller(sampled) && !m_options.read.keepFillers) {
        return "is what gaps read as; only --keep-fillers keeps it";
    }
    return {};
}

// What is appended was looked at before; this is about annotations that the file has. To cut these off would move them.
bool AnnotationEdit::checkStarts() {
    const auto& annotations = m_recording.annotations;
    const auto isBeyond = [&](const SampledLabel& annotation) { return annotation.start > m_recording.samples; };
    const auto first = std::find_if(annotations.begin(), annotations.end(), isBeyond);
    if (first == annotations.end()) {
        return true;
    }
    const auto others = static_cast<std::size_t>(std::count_if(first + 1, annotations.end(), isBeyond));
    const auto time = [&](std::uint64_t sample) { return timeOfSample(sample, m_recording.rate) + " s"; };
    m_diagnostics.error(nameOf(static_cast<std::size_t>(first - annotations.begin()), first->label) +
                        ", which the file has, starts at " + time(first->start) + ", beyond the end of the audio at " +
                        time(m_recording.samples) + (others > 0 ? ", as " + std::to_string(others) + " more do" : "") +
                        "; 'murvane-audio annotations clear' can remove such annotations");
    return false;
}

void AnnotationEdit::cutOffAtEnd() {
    std::size_t count = 0;
    for (std::size_t i = 0; i < m_recording.annotations.size(); ++i) {
        SampledLabel& annotation = m_recording.annotations[i];
        if (annotation.stop <= m_recording.samples) {
            continue;
        }
        if (++count <= c_uiMaxNamed) {
            const auto time = [&](std::uint64_t sample) { return timeOfSample(sample, m_recording.rate) + " s"; };
            m_diagnostics.warning(nameOf(i, annotation.label) + " ends at " + time(annotation.stop) +
                                  ", beyond the end of the audio at " + time(m_recording.samples) +
                                  "; it is cut off there");
        }
        annotation.stop = m_recording.samples;
    }
    if (count > c_uiMaxNamed) {
        m_diagnostics.warning(std::to_string(count - c_uiMaxNamed) + " more annotations are cut off there");
    }
}

bool AnnotationEdit::prepare() {
    const ChunkScan& scan = *m_loaded.scan;
    const std::size_t count = m_recording.annotations.size();
    if (count >= Audio::AnnotatedFile::c_uiEndOfCueNumbers) {
        m_diagnostics.error("would have " + std::to_string(count) + " annotations; less than " +
                            std::to_string(Audio::AnnotatedFile::c_uiEndOfCueNumbers) + " can be read again");
        return false;
    }
    const IFF::Chunk* list = scan.emptiedList();
    if (count == 0 && list != nullptr && list->getId() != IFF::ChunkId("LIST")) {
        m_diagnostics.error("cannot be left without annotations: the list of them is called \"" +
                            list->getId().toString() + "\" instead of \"LIST\", and cannot be removed");
        return false;
    }
    if (!checkStarts()) {
        return false;
    }
    cutOffAtEnd();
    warnOfLostRemains(scan, m_diagnostics);
    if (!m_bClearsAll) {
        warnOfLostDetails(scan, m_options.read.lenient, m_diagnostics);
    }
    if (!m_loaded.file.getParser().isExact()) {
        m_diagnostics.warning(
            "its chunks do not have the sizes that they say, which is corrected; 'murvane-audio annotations validate' "
            "tells more");
    }
    return true;
}

bool AnnotationEdit::checkWritable() {
    const bool isWritable = ::access(m_strPath.c_str(), W_OK) == 0;
    if (!isWritable) {
        m_diagnostics.error(std::string("cannot be written: ") + std::strerror(errno));
    }
    return isWritable;
}

// The library looks, too, but only at files that it took as they were.
bool AnnotationEdit::hasChangedOnDisk() const {
    return FileStamp::of(m_strPath) != m_loaded.stamp;
}

bool AnnotationEdit::replace(std::string& backup) {
    if (hasChangedOnDisk()) {
        m_diagnostics.error("is left alone: it changed since it was read");
        return false;
    }
    if (Interrupt::requested()) {
        m_diagnostics.error("interrupted");
        return false;
    }
    if (m_options.keepsBackup) {
        const std::string error = backUp(m_strPath, backup);
        if (!error.empty()) {
            m_diagnostics.error("cannot be kept as " + backup + ": " + error);
            return false;
        }
    }
    const bool isWritten = write(m_strPath);
    if (!isWritten) {
        m_diagnostics.error("cannot be written: " + m_loaded.file.getError() +
                            (backup.empty() ? "" : "; " + backup + " is a copy of it"));
    }
    return isWritten;
}

bool AnnotationEdit::write(const std::string& path) {
    Audio::AnnotatedFile& file = m_loaded.file;
    file.m_vAnnotations.clear();
    for (const SampledLabel& annotation : m_recording.annotations) {
        const TimedLabel times = toTimes(annotation, m_recording.rate);
        auto pAnnotation = std::make_unique<Audio::AnnotationImpl>();
        pAnnotation->setLabel(times.label.c_str());
        pAnnotation->setStartTime(times.start);
        pAnnotation->setStopTime(times.stop);
        file.m_vAnnotations.emplace_back(pAnnotation.release());
    }
    const MutedRecords muted(m_diagnostics);
    return file.saveFile(path);
}

bool AnnotationEdit::report(const std::string& backup) {
    const std::vector<SampledLabel> removed = difference(m_before, m_recording.annotations);
    const std::vector<SampledLabel> added = difference(m_recording.annotations, m_before);
    std::string text = m_strPath + ": " + std::to_string(removed.size()) + " removed, " + std::to_string(added.size()) +
                       " added; " + counted(m_recording.annotations.size(), "annotation") +
                       (m_options.isDryRun ? " (dry run: nothing written)" : "") +
                       (backup.empty() ? "" : "; the old file is " + backup) + '\n';
    const auto tell = [&](const char* sign, const std::vector<SampledLabel>& annotations) {
        for (const SampledLabel& annotation : annotations) {
            text += sign + timeOfSample(annotation.start, m_recording.rate) + " s to " +
                    timeOfSample(annotation.stop, m_recording.rate) + " s  " + visibleLabel(annotation.label) + '\n';
        }
    };
    if (m_options.isDryRun) {
        tell("- ", removed);
        tell("+ ", added);
    }
    Output output;
    if (output.open("") && output.write(text.data(), text.size()) && output.commit()) {
        return true;
    }
    m_diagnostics.error(output.describeError());
    return false;
}

}  // namespace Zantrix::Cli
