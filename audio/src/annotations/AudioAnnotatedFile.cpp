#include "AnnotationDiagnostics.h"

#include <murvane/audio/annotations/AudioAnnotatedFile.h>
#include <murvane/iff/WavChunks.h>

#include <algorithm>
#include <array>
#include <istream>
#include <iterator>
#include <limits>
#include <memory>
#include <ostream>
#include <string_view>
#include <utility>

namespace Zantrix::Audio {

namespace {

// The one text for both kinds of chunk: log filters have always known labels by it, too.
constexpr const char* c_szNoCue = "Error, cue point ID in ltxt chunk has no associated cue. Skipping it...";

template <typename... Parts>
void report(LogLevel level, int line, const Parts&... parts) {
    annotationLogger().log(level, c_szAnnotationSource, line, parts...);
}

// What hangs on cue points.
constexpr IFF::ChunkId c_textIds[] = {"ltxt", "labl", "note"};
using RemovedFrom = std::array<IFF::ChunkList*, std::size(c_textIds)>;

// Removes the chunks of annotations from a list and all below it; `lists` takes where the last one of each kind was.
void removeFrom(IFF::ChunkList& list, RemovedFrom& lists) {
    for (auto place = list.begin(); place != list.end();) {
        const auto* const id = std::find(std::begin(c_textIds), std::end(c_textIds), place->getId());
        if (id != std::end(c_textIds)) {
            lists[static_cast<std::size_t>(id - c_textIds)] = &list;
            place = list.erase(place);
        } else if (place->getId() == IFF::ChunkId("cue ")) {
            place = list.erase(place);
        } else {
            if (place->getList() != nullptr) {
                removeFrom(*place->getList(), lists);
            }
            ++place;
        }
    }
}

using Annotations = std::vector<CloneableObjPtr<Annotation>>;

// Makes the list reach to the largest cue number that is allowed, and puts the start times at their places, which
// `hasStart` tells. Returns the largest of all numbers.
std::uint32_t readCuePoints(IFF::IFFParser& parser, double rate, Annotations& annotations,
                            std::vector<bool>& hasStart) {
    std::uint32_t largest = 0;
    IFF::ChunkPos position;
    for (bool isFound = parser.find("cue ", position); isFound; isFound = parser.findNext(position)) {
        // Plain bytes where there is not even a count of records.
        if (position.getChunk()->getList() == nullptr) {
            continue;
        }
        for (const IFF::Chunk& record : *position.getChunk()->getList()) {
            IFF::WavCuePointChunk cue;
            cue.decode(record.getData(), record.getSize());
            const std::uint32_t index = cue.m_uiIdentifier;
            largest = std::max(largest, index);
            if (index >= AnnotatedFile::c_uiEndOfCueNumbers) {
                continue;
            }
            while (annotations.size() <= index) {
                annotations.push_back(CloneableObjPtr<Annotation>(new AnnotationImpl));
                hasStart.push_back(false);
            }
            annotations[index]->setStartTime(cue.m_uiSampleOffset / rate);
            hasStart[index] = true;
        }
    }
    return largest;
}

// Hands the content of every chunk with this identifier, wherever it stands, to `visit`.
template <typename Content, typename Visit>
void forEachChunk(IFF::IFFParser& parser, IFF::ChunkId id, Visit visit) {
    IFF::ChunkPos position;
    for (bool isFound = parser.find(id, position); isFound; isFound = parser.findNext(position)) {
        const IFF::Chunk& chunk = *position.getChunk();
        Content content;
        if (content.decode(chunk.getData(), chunk.getSize())) {
            visit(content);
        } else {
            report(LogLevel::Error, __LINE__, "Error, ", id, " chunk is too short. Skipping it...");
        }
    }
}

// Hands every annotation, with what hangs on its cue point as chunks of this identifier, to `put`. Returns which ones
// had any.
template <typename Content, typename Put>
std::vector<bool> readTexts(IFF::IFFParser& parser, IFF::ChunkId id, Annotations& annotations, Put put) {
    std::vector<bool> hasText(annotations.size(), false);
    forEachChunk<Content>(parser, id, [&](const Content& content) {
        const std::uint32_t index = content.m_uiIdentifier;
        if (index >= annotations.size()) {
            report(LogLevel::Error, __LINE__, c_szNoCue);
            return;
        }
        put(*annotations[index], content);
        hasText[index] = true;
    });
    return hasText;
}

}  // namespace

// The contents of all annotation chunks, one after the other in one buffer: to ask for as many buffers and give them
// back takes longer than to fill them.
struct AnnotatedFile::AnnotationContents {
    std::string bytes;
    std::vector<std::size_t> ends;
    std::vector<char> one;

    template <typename Content>
    void append(const Content& content) {
        content.encode(one);
        bytes.append(one.data(), one.size());
        ends.push_back(bytes.size());
    }
};

std::istream& AnnotatedFile::readFromWAV(std::istream& is) {
    m_vAnnotations.clear();
    m_strError.clear();
    m_strLoadedFrom.clear();
    m_parser.read(is);
    if (!m_parser.isValid()) {
        m_strError = m_parser.getError();
        return is;
    }
    if (!readWavProperties()) {
        is.setstate(std::ios::failbit);
    } else if (!readAnnotations()) {
        m_vAnnotations.clear();
        is.setstate(std::ios::failbit);
    }
    return is;
}

bool AnnotatedFile::readWavProperties() {
    IFF::ChunkPos position;
    if (!m_parser.find("fmt ", position)) {
        return refuse("Invalid WAV file : no chunk fmt");
    }
    IFF::WavFmtChunk chunkFmt;  // stays at 0 channels if the chunk is too short
    chunkFmt.decode(position.getChunk()->getData(), position.getChunk()->getSize());
    m_uiSampleRate = chunkFmt.m_uiSampleRate;
    report(LogLevel::Debug, __LINE__, "Sample rate of WAV file : ", m_uiSampleRate);
    const auto demand = [this](bool condition, const char* text, int line, const std::string& reason) {
        if (!Assertion(condition, text, c_szAnnotationSource, line)) {
            m_strError = reason;
        }
        return condition;
    };
    const unsigned bytesPerSample = chunkFmt.m_usSignBitsPerSample / 8;
    if (!demand(chunkFmt.m_usNbOfChannels == 1, "chunkFmt.m_usNbOfChannels == 1", __LINE__,
                concatenate("only mono files can be annotated, this has ", chunkFmt.m_usNbOfChannels, " channels")) ||
        !demand(bytesPerSample > 0, "chunkFmt.m_usSignBitsPerSample >= 8", __LINE__,
                concatenate("samples of ", chunkFmt.m_usSignBitsPerSample, " bits cannot be counted"))) {
        return false;
    }
    if (!m_parser.find("data", position)) {
        return refuse("Invalid WAV file : no chunk data");
    }
    m_uiNbOfSamples = position.getChunk()->getSize() / bytesPerSample;
    report(LogLevel::Debug, __LINE__, "Number of samples in WAV file : ", m_uiNbOfSamples);
    return demand(m_uiSampleRate > 0, "chunkFmt.m_uiSampleRate > 0", __LINE__, "its sample rate is 0");
}

bool AnnotatedFile::readAnnotations() {
    const double rate = m_uiSampleRate;
    std::vector<bool> hasStart;
    const std::uint32_t largest = readCuePoints(m_parser, rate, m_vAnnotations, hasStart);
    if (largest >= c_uiEndOfCueNumbers) {
        return refuse(concatenate("Error, cue point ID ", largest, " is not below ", c_uiEndOfCueNumbers));
    }
    const std::vector<bool> hasStop = readTexts<IFF::WavLabeledTextChunk>(
        m_parser, "ltxt", m_vAnnotations, [&](Annotation& annotation, const IFF::WavLabeledTextChunk& text) {
            annotation.setStopTime(annotation.getStartTime() + text.m_uiSampleLength / rate);
        });
    const std::vector<bool> hasLabel = readTexts<IFF::WavLabelChunk>(
        m_parser, "labl", m_vAnnotations,
        [](Annotation& annotation, const IFF::WavLabelChunk& label) { annotation.setLabel(label.m_strText.c_str()); });
    if (hasStop != hasStart) {
        return refuse("Error, at least a start time is missing in the annotations");
    }
    if (hasLabel != hasStart) {
        return refuse("Error, at least a label is missing in the annotations");
    }
    if (std::find(hasStart.begin(), hasStart.end(), false) != hasStart.end()) {
        report(LogLevel::Warn, __LINE__,
               "Annotation indexes are not contiguous. This would lead to empty annotations, which should not be a "
               "problem.");
    }
    return true;
}

std::ostream& AnnotatedFile::writeToWAV(std::ostream& os) {
    m_strError.clear();
    const auto fail = [&]() -> std::ostream& {
        os.setstate(std::ios::failbit);
        return os;
    };
    const auto isNull = [](const CloneableObjPtr<Annotation>& pAnnotation) { return pAnnotation.isNull(); };
    if (!Assertion(std::none_of(m_vAnnotations.begin(), m_vAnnotations.end(), isNull), "!pAnnotation.isNull()",
                   c_szAnnotationSource, __LINE__)) {
        m_strError = "an annotation is null";
        return fail();
    }
    if (m_vAnnotations.size() >= c_uiEndOfCueNumbers) {
        refuse(concatenate("Error, ", m_vAnnotations.size(), " annotations are too many to be read again"));
        return fail();
    }
    IFF::ChunkList* const pOldList = clearAnnotations();
    if (!readWavProperties()) {
        return fail();
    }
    if (!m_vAnnotations.empty()) {
        appendAnnotations(pOldList);
    } else if (pOldList != nullptr && pOldList->empty() && pOldList->getTail().empty() && !removeEmptied(*pOldList)) {
        return fail();
    }
    if (!m_parser.write(os)) {
        m_strError = m_parser.getError();
    }
    return os;
}

// The list that the last "note" chunk was in; without any the last "labl", then the last "ltxt" chunk; or null.
IFF::ChunkList* AnnotatedFile::clearAnnotations() {
    RemovedFrom lists{};
    removeFrom(m_parser.getChunks(), lists);
    const auto found =
        std::find_if(lists.rbegin(), lists.rend(), [](IFF::ChunkList* pList) { return pList != nullptr; });
    return found == lists.rend() ? nullptr : *found;
}

bool AnnotatedFile::removeEmptied(const IFF::ChunkList& list) {
    IFF::ChunkPos position;
    if (!m_parser.findOwner(list, position) || position.getChunk()->getId() != IFF::ChunkId("LIST")) {
        return refuse("Not able to delete empty LIST chunk");
    }
    m_parser.remove(position);
    return true;
}

void AnnotatedFile::appendAnnotations(IFF::ChunkList* pOldList) {
    IFF::Chunk cue("cue ");
    IFF::Chunk newList("LIST");
    newList.getList()->setType("adtl");
    IFF::ChunkList& list = pOldList != nullptr ? *pOldList : *newList.getList();
    AnnotationContents contents;
    constexpr std::size_t c_uiUsualSize = 64;  // of the three contents, with a short label
    contents.bytes.reserve(c_uiUsualSize * m_vAnnotations.size());
    contents.ends.reserve(3 * m_vAnnotations.size());
    unsigned id = 0;
    for (const CloneableObjPtr<Annotation>& pAnnotation : m_vAnnotations) {
        createAnnotation(*pAnnotation, ++id, contents);
    }
    const auto pBytes = std::make_shared<const std::string>(std::move(contents.bytes));
    std::size_t begin = 0;
    auto itEnd = contents.ends.begin();
    const auto appendNext = [&](IFF::ChunkId chunkId, IFF::ChunkList& to) {
        const std::size_t end = *itEnd++;
        to.append(chunkId, IFF::SharedBytes(pBytes, std::string_view(*pBytes).substr(begin, end - begin)));
        begin = end;
    };
    while (itEnd != contents.ends.end()) {
        appendNext("cuep", *cue.getList());
        appendNext("ltxt", list);
        appendNext("labl", list);
    }
    m_parser.getChunks().append(std::move(cue));
    if (pOldList == nullptr) {
        m_parser.getChunks().append(std::move(newList));
    }
}

// Adds the contents of its three chunks: "cuep", "ltxt" and "labl".
void AnnotatedFile::createAnnotation(const Annotation& annotation, unsigned id, AnnotationContents& contents) const {
    std::uint32_t start = toSample(annotation.getStartTime(), m_uiSampleRate);
    if (start > m_uiNbOfSamples) {
        report(LogLevel::Warn, __LINE__, "Start time for one of the annotations ", start,
               " is greater than the end of this audio file ", m_uiNbOfSamples, " Annotation: ", annotation,
               ". Shrinking it...");
        start = m_uiNbOfSamples;
    }
    IFF::WavCuePointChunk cueContent;
    cueContent.m_uiIdentifier = id;
    cueContent.m_uiPosition = cueContent.m_uiSampleOffset = start;
    contents.append(cueContent);

    std::uint32_t length = toSample(annotation.getStopTime() - annotation.getStartTime(), m_uiSampleRate);
    if (std::uint64_t{start} + length > m_uiNbOfSamples) {
        report(LogLevel::Warn, __LINE__,
               "Stop time for one of the annotations is greater than the end of this audio file. Shrinking it...");
        length = m_uiNbOfSamples - start;
    }
    IFF::WavLabeledTextChunk textContent;
    textContent.m_uiIdentifier = id;
    textContent.m_uiSampleLength = length;
    contents.append(textContent);

    IFF::WavLabelChunk labelContent;
    labelContent.m_uiIdentifier = id;
    labelContent.m_strText = annotation.getLabel();
    contents.append(labelContent);
}

std::uint32_t AnnotatedFile::toSample(double seconds, std::uint32_t sampleRate) {
    const double sample = seconds * sampleRate + 0.5;
    if (!(sample >= 1.0)) {  // NaN as well
        return 0;
    }
    constexpr std::uint32_t last = std::numeric_limits<std::uint32_t>::max();
    return sample >= last ? last : static_cast<std::uint32_t>(sample);
}

bool AnnotatedFile::refuse(const std::string& reason) {
    m_strError = reason;
    report(LogLevel::Error, __LINE__, reason);
    return false;
}

}  // namespace Zantrix::Audio
