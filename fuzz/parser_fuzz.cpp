// Any bytes: read, walk, write, read again; then the same with the annotations replaced.
#include "Require.h"

#include <murvane/iff/IFFParser.h>
#include <murvane/iff/WavChunks.h>

#include <cstddef>
#include <cstdint>
#include <sstream>
#include <string>
#include <string_view>
#include <vector>

namespace {

using namespace Zantrix::IFF;

// The content of a chunk as it is encoded again; false if it is none of this kind.
template <typename Content>
bool encodedAs(const Chunk& chunk, std::string& bytes) {
    Content content;
    if (!content.decode(chunk.getData(), chunk.getSize())) {
        return false;
    }
    std::vector<char> encoded;
    content.encode(encoded);
    bytes.assign(encoded.begin(), encoded.end());
    return true;
}

template <typename Content>
void requireSameEncoded(const Chunk& chunk, const char* what) {
    std::string bytes;
    require(!encodedAs<Content>(chunk, bytes) || bytes == std::string_view(chunk.getData(), chunk.getSize()), what);
}

// Reads every byte of the tree, and its contents as each kind of chunk; describes it without padding.
std::string describe(const ChunkList& list) {
    std::string text = "(" + list.getType().toString();
    for (const Chunk& chunk : list) {
        text += ' ' + chunk.getId().toString();
        if (chunk.getList() != nullptr) {
            text += describe(*chunk.getList());
            continue;
        }
        text.append(chunk.getData() == nullptr ? "" : chunk.getData(), chunk.getSize());
        requireSameEncoded<WavFmtChunk>(chunk, "a format is encoded as it was decoded");
        requireSameEncoded<WavLabeledTextChunk>(chunk, "a labelled text is encoded as it was decoded");
        // Records and labels may carry bytes beyond what they mean.
        std::string ignored;
        encodedAs<WavCuePointChunk>(chunk, ignored);
        encodedAs<WavLabelChunk>(chunk, ignored);
    }
    text.append(list.getTail().view());
    return text + ")";
}

std::string write(IFFParser& parser) {
    std::ostringstream os;
    parser.write(os);
    require(os.good(), "what was read can be written");
    return os.str();
}

bool read(IFFParser& parser, const std::string& bytes) {
    std::istringstream is(bytes);
    parser.read(is);
    require(parser.isValid() == !is.fail(), "the fail bit and validity agree");
    require(parser.isValid() == parser.getError().empty(), "a refusal has a reason");
    return parser.isValid();
}

// Where padding is missing or rubbish, what follows decides how it is read; a change to what follows may change that.
bool isDoubtful(const IFFParser& parser) {
    for (const Finding& finding : parser.getFindings()) {
        if (finding.strText.find("padding") != std::string::npos) {
            return true;
        }
    }
    return parser.getFindings().size() >= 1000;
}

void replaceAnnotations(IFFParser& parser) {
    ChunkPos position;
    for (const ChunkId id : {ChunkId("cue "), ChunkId("ltxt"), ChunkId("labl"), ChunkId("note")}) {
        for (bool found = parser.find(id, position); found; found = parser.findNext(position)) {
            require(position.getChunk()->getId() == id, "find finds what was asked for");
            parser.remove(position);
        }
        require(!parser.find(id, position), "all are removed in one pass");
    }
    std::vector<char> data;
    Chunk record("cuep");
    WavCuePointChunk().encode(data);
    record.setData(data.data(), static_cast<unsigned>(data.size()));
    parser.getChunks().append(Chunk("cue ")).getList()->append(record);
}

std::size_t countCuePoints(IFFParser& parser) {
    std::size_t count = 0;
    ChunkPos position;
    for (bool found = parser.find("cuep", position); found; found = parser.findNext(position)) {
        // A file may have a chunk of this name of its own.
        const Chunk* owner = position.getOwner();
        count += owner != nullptr && owner->getId() == ChunkId("cue ") ? 1 : 0;
    }
    return count;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string input(reinterpret_cast<const char*>(data), size);
    IFFParser parser;
    if (!read(parser, input)) {
        return 0;
    }
    const bool doubtful = isDoubtful(parser);
    const std::string tree = describe(parser.getChunks());
    const std::string output = write(parser);
    require(!parser.isExact() || output == input, "an exact tree is written as it was read");

    IFFParser again;
    require(read(again, output), "what was written can be read");
    if (!doubtful) {
        require(describe(again.getChunks()) == tree, "the tree survives writing");
        require(again.isExact(), "what was written has sizes that fit");
    }

    replaceAnnotations(parser);
    require(read(again, write(parser)), "what was changed can be read");
    require(doubtful || countCuePoints(again) == 1, "the new cue point is the only one");
    return 0;
}
