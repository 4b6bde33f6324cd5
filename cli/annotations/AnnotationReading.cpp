#include "annotations/AnnotationReading.h"

#include "annotations/ById.h"
#include "annotations/MutedRecords.h"
#include "shell/InputFile.h"

#include <algorithm>

namespace po = boost::program_options;

namespace Zantrix::Cli {

namespace {

// Names of labels in a warning; a count does for the others.
constexpr std::size_t c_uiMaxNamed = 5;

constexpr const char* c_szLenientHint = "; 'murvane-audio annotations list --lenient' shows what can be saved of it, ";
constexpr const char* c_szLenientEditHint = "edits with --lenient, such as 'add --lenient', keep that, ";
constexpr const char* c_szValidateHint = "'murvane-audio annotations validate' tells all that is wrong";

/// Why the cue points, intervals and labels of a file are no annotations; empty when they are.
std::string describeMisfits(const ChunkScan& scan) {
    const ById<ScannedCue> points(scan.points);
    const ById<ScannedLength> lengths(scan.lengths);
    const ById<ScannedText> labels(scan.labels);
    const auto count = [](const auto& items, const auto& others) {
        return static_cast<std::size_t>(std::count_if(
            items.begin(), items.end(), [&](const auto& item) { return others.first(item.id) == nullptr; }));
    };
    std::string text;
    const auto add = [&](std::size_t number, const char* what, const char* lack) {
        if (number > 0) {
            text += (text.empty() ? "" : ", ") + counted(number, what) + " without " + lack;
        }
    };
    add(count(scan.points, lengths), "cue point", "a length (\"ltxt\" chunk)");
    add(count(scan.points, labels), "cue point", "a label (\"labl\" chunk)");
    add(count(scan.lengths, points), "length", "a cue point");
    add(count(scan.labels, points), "label", "a cue point");
    return text;
}

std::string describeRefusal(const LoadedFile& loaded) {
    const Audio::AnnotatedFile& file = loaded.file;
    if (!file.getParser().isValid()) {
        return file.getError();
    }
    const ChunkScan& scan = *loaded.scan;
    if (const auto defect = loaded.headerDefect(); defect && !scan.samples()) {
        return *defect + c_szHeaderHint;  // what is behind such a header may not be seen as chunks at all
    }
    // With audio that can be annotated and identifiers that can be used, it is the annotations.
    const bool isIdGood = std::all_of(scan.points.begin(), scan.points.end(), [](const ScannedCue& point) {
        return point.id < Audio::AnnotatedFile::c_uiEndOfCueNumbers;
    });
    const std::string misfits = scan.canBeAnnotated() && isIdGood ? describeMisfits(scan) : "";
    std::string text = misfits.empty() ? loaded.obstacle() : "its annotations do not fit together: " + misfits;
    if (!scan.points.empty() || !scan.loops.empty()) {
        text += c_szLenientHint;
        text += scan.canBeAnnotated() && !loaded.headerDefect() ? c_szLenientEditHint : "";
        text += c_szValidateHint;
    }
    return text;
}

/// About the chunk of audio that the library counts the samples of, or would if it saw one.
std::optional<WavHeader> headerOf(const std::string& path, const ChunkScan& scan) {
    return scan.datas.empty() ? readWavHeader(path) : readWavHeader(path, scan.datas.front()->getFileOffset());
}

void warnOfOrphans(const ChunkScan& scan, Diagnostics& diagnostics) {
    const ById<ScannedCue> points(scan.points);
    std::size_t count = 0;
    for (const ScannedText& label : scan.labels) {
        if (points.first(label.id) == nullptr && ++count <= c_uiMaxNamed) {
            diagnostics.warning("the label " + visibleLabel(std::string(label.text)) + " at offset " +
                                std::to_string(label.offset) + " belongs to cue point " + std::to_string(label.id) +
                                ", which is not there");
        }
    }
    if (count > c_uiMaxNamed) {
        diagnostics.warning(counted(count - c_uiMaxNamed, "more label") + " of missing cue points");
    }
}

std::vector<SampledLabel> scannedAnnotations(const ChunkScan& scan, Loops loops) {
    const ById<ScannedCue> points(scan.points);
    const ById<ScannedLength> lengths(scan.lengths);
    const ById<ScannedText> labels(scan.labels);
    const ById<ScannedLoop> loopsById(scan.loops);
    const auto labelOf = [&](std::uint32_t id) {
        const ScannedText* label = labels.last(id);
        return label == nullptr ? std::string() : std::string(label->text);
    };
    const auto endOf = [](const ScannedLoop& loop) {
        return std::max<std::uint64_t>(loop.first, std::uint64_t{loop.last} + 1);
    };
    // Some programs write regions as a cue point and a loop of the same number that begins there.
    const auto isOfCue = [&](const ScannedLoop& loop, const ScannedCue* point) {
        return point != nullptr && point->sample == loop.first && lengths.first(point->id) == nullptr;
    };
    std::vector<SampledLabel> annotations;
    for (const ScannedCue& point : scan.points) {
        const ScannedLength* length = lengths.last(point.id);
        const ScannedLoop* loop = loopsById.first(point.id);
        const std::uint64_t stop = length != nullptr ? std::uint64_t{point.sample} + length->samples
                                   : loop != nullptr && isOfCue(*loop, &point) ? endOf(*loop)
                                                                               : point.sample;
        annotations.push_back({labelOf(point.id), point.sample, stop});
    }
    // Others write the length, too.
    const auto isSameAs = [&](const ScannedLoop& loop, const ScannedCue* point) {
        const ScannedLength* length = lengths.last(loop.id);
        return point != nullptr && length != nullptr && point->sample == loop.first &&
               std::uint64_t{point->sample} + length->samples == endOf(loop);
    };
    for (const ScannedLoop& loop : scan.loops) {
        const ScannedCue* point = points.first(loop.id);
        const bool isTaken = (!loopsById.isRepeated(loop) && isOfCue(loop, point)) || isSameAs(loop, point);
        if (loops == Loops::Regions && !isTaken) {
            annotations.push_back({labelOf(loop.id), loop.first, endOf(loop)});
        }
    }
    return annotations;
}

}  // namespace

void addReadOptions(po::options_description& description, ReadOptions& options) {
    description.add_options()  //
        ("lenient", po::bool_switch(&options.lenient),
         "take what can be saved of files whose annotations do not fit together: cue points without length, loops of "
         "samplers, audio that is not mono")  //
        ("keep-fillers", po::bool_switch(&options.keepFillers),
         "take annotations \"SF_MIN\" from 0 to 0 s, too, which stand for gaps among the numbers of cue points");
}

std::optional<std::string> LoadedFile::headerDefect() const {
    return header && header->size != WavHeader::Size::Fits ? std::optional(header->describe()) : std::nullopt;
}

std::string LoadedFile::obstacle() const {
    const bool isMono = scan->fmt && scan->fmt->m_usNbOfChannels == 1;
    const std::string reason = isMono ? scan->whyUncountable() : "";
    return reason.empty() ? file.getError() : reason;
}

bool loadAnnotated(const std::string& path, bool lenient, Diagnostics& diagnostics, LoadedFile& loaded) {
    if (!checkNotEmpty(path, diagnostics)) {
        return false;
    }
    loaded.stamp = FileStamp::of(path);
    const MutedRecords muted(diagnostics);
    const bool isRead = loaded.file.loadFile(path);
    const ChunkScan& scan = loaded.scan.emplace(loaded.file.getParser());
    loaded.header = loaded.stamp == FileStamp() ? std::nullopt : headerOf(path, scan);
    if (FileStamp::of(path) != loaded.stamp) {
        diagnostics.error("it changed while it was read");
        return false;
    }
    const bool isDone = isRead && scan.whyUncountable().empty();
    if (!isDone && !(lenient && loaded.file.getParser().isValid())) {
        diagnostics.error(describeRefusal(loaded));
        return false;
    }
    return true;
}

Recording recordingOf(const LoadedFile& loaded, const ReadOptions& options, Loops loops) {
    Recording recording;
    if (options.lenient) {
        const ChunkScan& scan = *loaded.scan;
        recording.rate = scan.fmt ? scan.fmt->m_uiSampleRate : 0;
        recording.samples = scan.samples().value_or(0);
        recording.annotations = scannedAnnotations(scan, loops);
    } else {
        const Audio::AnnotatedFile& file = loaded.file;
        recording.rate = file.getSampleRate();
        recording.samples = file.getNbOfSamples();
        recording.annotations.reserve(file.m_vAnnotations.size() + 1);  // most edits add one
        for (const auto& pAnnotation : file.m_vAnnotations) {
            recording.annotations.push_back(toSamples(
                {pAnnotation->getLabel(), pAnnotation->getStartTime(), pAnnotation->getStopTime()}, recording.rate));
        }
    }
    if (!options.keepFillers) {
        std::erase_if(recording.annotations, isFiller);
    }
    return recording;
}

bool readRecording(const std::string& path, const ReadOptions& options, Diagnostics& diagnostics,
                   Recording& recording) {
    LoadedFile loaded;
    if (!loadAnnotated(path, options.lenient, diagnostics, loaded)) {
        return false;
    }
    recording = recordingOf(loaded, options, Loops::Regions);
    if (const auto defect = loaded.headerDefect()) {
        diagnostics.warning(*defect);
    }
    warnOfOrphans(*loaded.scan, diagnostics);
    return true;
}

bool isFiller(const SampledLabel& annotation) {
    return annotation.start == 0 && annotation.stop == 0 && annotation.label == "SF_MIN";
}

SampledLabel toSamples(const TimedLabel& label, std::uint32_t rate) {
    const std::uint64_t start = Audio::AnnotatedFile::toSample(label.start, rate);
    return {label.label, start, start + Audio::AnnotatedFile::toSample(label.stop - label.start, rate)};
}

TimedLabel toTimes(const SampledLabel& label, std::uint32_t rate) {
    const double start = static_cast<double>(label.start) / rate;
    return {label.label, start, start + static_cast<double>(label.stop - label.start) / rate};
}

}  // namespace Zantrix::Cli
