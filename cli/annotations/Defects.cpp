#include "annotations/Defects.h"

#include "annotations/ById.h"
#include "annotations/ChunkScan.h"
#include "shell/Text.h"

#include <murvane/audio/annotations/AudioAnnotatedFile.h>
#include <murvane/core/Logging.h>

#include <algorithm>
#include <optional>

namespace Zantrix::Cli {

namespace {

// As many as the parser notes; a hostile file could have one for every eight of its bytes.
constexpr std::size_t c_uiMaxFindings = 1000;

class Inspection {
public:
    explicit Inspection(const IFF::IFFParser& parser)
        : m_scan(parser), m_samples(m_scan.samples()), m_points(m_scan.points) {
        for (const IFF::Finding& finding : parser.getFindings()) {
            m_defects.findings.push_back(finding);
        }
        checkShorts();
        checkFormat();
        checkData();
        checkPlaces();
        checkPoints();
        checkLengths();
        checkTexts("labl", m_scan.labels, true);
        checkTexts("note", m_scan.notes, false);
        checkLoops();
    }

    Defects take() {
        const auto byOffset = [](const IFF::Finding& a, const IFF::Finding& b) { return a.uiOffset < b.uiOffset; };
        std::stable_sort(m_defects.findings.begin(), m_defects.findings.end(), byOffset);
        if (m_defects.findings.size() > c_uiMaxFindings) {
            m_defects.omitted = m_defects.findings.size() - c_uiMaxFindings;
            m_defects.findings.resize(c_uiMaxFindings);
        }
        return std::move(m_defects);
    }

private:
    template <typename... Parts>
    void note(std::uint64_t offset, const Parts&... parts) {
        m_defects.findings.push_back({offset, concatenate(parts...)});
    }

    void checkShorts() {
        for (const ShortChunk& chunk : m_scan.shorts) {
            note(chunk.offset, "chunk \"", chunk.id, "\" of ", chunk.present, " bytes is too short, ", chunk.needed,
                 " are needed");
        }
    }

    void noteAllButFirst(const std::vector<const IFF::Chunk*>& chunks, const char* what) {
        for (std::size_t i = 1; i < chunks.size(); ++i) {
            note(chunks[i]->getFileOffset(), "another ", what);
        }
    }

    void checkFormat() {
        noteAllButFirst(m_scan.fmts, "\"fmt \" chunk; the first one counts");
        if (m_scan.fmts.empty()) {
            note(0, "there is no \"fmt \" chunk");
        }
        if (!m_scan.fmt) {
            return;
        }
        const IFF::WavFmtChunk& fmt = *m_scan.fmt;
        const std::uint64_t offset = m_scan.fmts.front()->getFileOffset();
        if (fmt.m_usNbOfChannels == 0) {
            note(offset, "the audio has 0 channels");
        }
        if (fmt.m_uiSampleRate == 0) {
            note(offset, "the sample rate is 0");
        }
        // Compressed audio, and 12 bits in two bytes, are right in themselves.
        const unsigned frame = m_scan.frameBytes();
        const std::string uncountable = m_scan.whyUncountable();
        if (m_scan.isPlain() && (fmt.m_usSignBitsPerSample == 0 || fmt.m_usBlockAlign != frame)) {
            note(offset, uncountable);
            return;
        }
        if (const auto second = std::uint64_t{fmt.m_uiSampleRate} * frame;
            m_scan.isPlain() && fmt.m_uiAverageBytesPerSecond != second) {
            note(offset, "a second takes ", second, " bytes, the format says ", fmt.m_uiAverageBytesPerSecond);
        }
        m_defects.obstacle = fmt.m_usNbOfChannels > 1
                                 ? concatenate("the audio has ", fmt.m_usNbOfChannels, " channels, not one")
                                 : uncountable;
    }

    void checkData() {
        noteAllButFirst(m_scan.datas, "\"data\" chunk; the first one counts");
        if (m_scan.datas.empty()) {
            note(0, "there is no \"data\" chunk");
            return;
        }
        const IFF::Chunk& data = *m_scan.datas.front();
        const std::uint64_t offset = data.getFileOffset();
        if (!m_scan.fmts.empty() && m_scan.fmts.front()->getFileOffset() > offset) {
            note(m_scan.fmts.front()->getFileOffset(), "the \"fmt \" chunk stands behind the \"data\" chunk");
        }
        const unsigned frame = m_scan.frameBytes();
        if (frame != 0 && data.getSize() % frame != 0) {
            note(offset, "the last ", data.getSize() % frame, " bytes of the audio are no whole sample");
        }
    }

    void checkPlaces() {
        noteAllButFirst(m_scan.cues, "\"cue \" chunk; the points of all count");
        noteAllButFirst(m_scan.lists, "list of annotations; the chunks of all count");
        for (const IFF::Chunk* list : m_scan.lists) {
            if (list->getId() != IFF::ChunkId("LIST")) {
                note(list->getFileOffset(), "the list of annotations is called \"", list->getId(),
                     "\" instead of \"LIST\"; many programs do not see it");
            }
        }
        for (const IFF::Chunk* stray : m_scan.strays) {
            note(stray->getFileOffset(), "chunk \"", stray->getId(), "\" is outside a list of annotations");
        }
    }

    void checkPoints() {
        const ById<ScannedLength> lengths(m_scan.lengths);
        const ById<ScannedText> labels(m_scan.labels);
        for (const ScannedCue& point : m_scan.points) {
            const auto defect = [&](const auto&... parts) { note(point.offset, "cue point ", point.id, parts...); };
            if (isBeyondEnd(point.sample)) {
                defect(" at sample ", point.sample, beyondEnd());
            }
            if (m_points.isRepeated(point)) {
                defect(" is there again; the last one counts");
                continue;
            }
            if (point.id >= Audio::AnnotatedFile::c_uiEndOfCueNumbers) {
                defect(" has too large an identifier, ", Audio::AnnotatedFile::c_uiEndOfCueNumbers - 1,
                       " is the largest");
            }
            if (lengths.first(point.id) == nullptr) {
                defect(" has no length (\"ltxt\" chunk)");
            }
            if (labels.first(point.id) == nullptr) {
                defect(" has no label (\"labl\" chunk)");
            }
        }
    }

    void checkLengths() {
        const ById<ScannedLength> lengths(m_scan.lengths);
        for (const ScannedLength& length : m_scan.lengths) {
            const ScannedCue* point = m_points.last(length.id);
            if (point == nullptr) {
                note(length.offset, "chunk \"ltxt\" belongs to cue point ", length.id, ", which is not there");
            } else if (const std::uint64_t end = std::uint64_t{point->sample} + length.samples;
                       isBeyondEnd(end) && !isBeyondEnd(point->sample)) {
                note(length.offset, "the interval of cue point ", length.id, " ends at sample ", end, beyondEnd());
            }
            if (lengths.isRepeated(length)) {
                note(length.offset, "another \"ltxt\" chunk of cue point ", length.id, "; the last one counts");
            }
        }
    }

    void checkTexts(const char* id, const std::vector<ScannedText>& texts, bool isUnique) {
        const ById<ScannedText> byId(texts);
        for (const ScannedText& text : texts) {
            if (m_points.first(text.id) == nullptr) {
                note(text.offset, "chunk \"", id, "\" belongs to cue point ", text.id, ", which is not there");
            }
            if (!text.isTerminated) {
                note(text.offset, "the text of chunk \"", id, "\" lacks the zero byte at its end");
            }
            if (!isUtf8(text.text)) {
                note(text.offset, "the text of chunk \"", id, "\" is not UTF-8");
            }
            if (isUnique && byId.isRepeated(text)) {
                note(text.offset, "another \"", id, "\" chunk of cue point ", text.id, "; the last one counts");
            }
        }
    }

    void checkLoops() {
        for (const ScannedLoop& loop : m_scan.loops) {
            if (loop.last < loop.first) {
                note(loop.offset, "the loop ends at sample ", loop.last, ", before its start at ", loop.first);
            } else if (isBeyondEnd(std::uint64_t{loop.last} + 1)) {
                note(loop.offset, "the loop ends with sample ", loop.last, beyondEnd());
            }
        }
    }

    bool isBeyondEnd(std::uint64_t sample) const { return m_samples && sample > *m_samples; }

    std::string beyondEnd() const { return concatenate(", beyond the end of the audio at ", *m_samples); }

    const ChunkScan m_scan;
    const std::optional<std::uint64_t> m_samples;
    const ById<ScannedCue> m_points;
    Defects m_defects;
};

}  // namespace

Defects findDefects(const IFF::IFFParser& parser) {
    return Inspection(parser).take();
}

}  // namespace Zantrix::Cli
