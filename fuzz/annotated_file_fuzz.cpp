// Any bytes, read as an annotated file; what can be read is written and read again.
#include "QuietLog.h"
#include "Require.h"

#include <murvane/audio/annotations/AudioAnnotatedFile.h>
#include <murvane/iff/WavChunks.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <sstream>
#include <string>
#include <vector>

namespace {

using namespace Zantrix;
using Audio::AnnotatedFile;

bool read(AnnotatedFile& file, const std::string& bytes) {
    std::istringstream is(bytes);
    const bool isRead = !file.readFromWAV(is).fail();
    require(isRead == file.getError().empty(), "a refusal has a reason");
    require(isRead || file.m_vAnnotations.empty(), "a refused file has no annotations");
    return isRead;
}

// Whether the list would be so long that a run takes seconds; its length is limited, which tests of their own show.
bool isTooLong(const std::string& bytes) {
    std::istringstream is(bytes);
    IFF::IFFParser parser;
    parser.read(is);
    IFF::ChunkPos position;
    for (bool isFound = parser.find("cuep", position); isFound; isFound = parser.findNext(position)) {
        IFF::WavCuePointChunk cue;
        cue.decode(position.getChunk()->getData(), position.getChunk()->getSize());
        if (cue.m_uiIdentifier > 2000 && cue.m_uiIdentifier < AnnotatedFile::c_uiEndOfCueNumbers) {
            return true;
        }
    }
    return false;
}

std::string audioOf(const AnnotatedFile& file) {
    IFF::IFFParser parser = file.getParser();
    IFF::ChunkPos position;
    require(parser.find("data", position), "a file that was read has a data chunk");
    const IFF::Chunk& data = *position.getChunk();
    return std::string(data.getData() == nullptr ? "" : data.getData(), data.getSize());
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string input(reinterpret_cast<const char*>(data), size);
    AnnotatedFile file;
    if (isTooLong(input) || !read(file, input)) {
        return 0;
    }
    for (const auto& pAnnotation : file.m_vAnnotations) {
        require(pAnnotation->getStartTime() >= 0.0, "no annotation starts before the audio");
    }

    const AnnotatedFile before = file;
    std::ostringstream os;
    if (file.writeToWAV(os).fail()) {
        require(os.str().empty(), "a refused write writes nothing");
        require(!file.getError().empty(), "a refusal has a reason");
        return 0;
    }
    AnnotatedFile again;
    require(read(again, os.str()), "what was written can be read");
    require(audioOf(again) == audioOf(before), "the audio is the same");
    const std::size_t count = before.m_vAnnotations.size();
    require(again.m_vAnnotations.size() == (count == 0 ? 0 : count + 1), "one more in front");
    for (std::size_t i = 0; i < count; ++i) {
        const Audio::Annotation& old = *before.m_vAnnotations[i];
        const Audio::Annotation& now = *again.m_vAnnotations[i + 1];
        const std::uint32_t rate = before.getSampleRate();
        const std::uint32_t start = AnnotatedFile::toSample(old.getStartTime(), rate);
        require(old.getLabel() == now.getLabel(), "the label is the same");
        require(AnnotatedFile::toSample(now.getStartTime(), rate) == std::min(start, before.getNbOfSamples()),
                "the start is the same, or the end of the audio");
    }
    return 0;
}
