#pragma once

#include <murvane/iff/IFFParser.h>
#include <testkit/WavBytes.h>

#include <sstream>
#include <string>

/// Shows trees of chunks as strings, so that they can be compared in tests.
namespace wav {

inline std::string outline(const Zantrix::IFF::ChunkList& list) {
    std::string text;
    for (const Zantrix::IFF::Chunk& chunk : list) {
        text += text.empty() ? "" : " ";
        text += chunk.getId().toString() + ":";
        if (chunk.getList() == nullptr) {
            text += std::to_string(chunk.getSize());
        } else {
            const bool isCue = chunk.getId() == Zantrix::IFF::ChunkId("cue ");
            text += (isCue ? "" : chunk.getList()->getType().toString()) + "(" + outline(*chunk.getList()) + ")";
        }
    }
    if (!list.getTail().empty()) {
        text += " tail:" + std::to_string(list.getTail().size());
    }
    return text;
}

inline std::string outline(const Zantrix::IFF::IFFParser& parser) {
    return outline(parser.getChunks());
}

inline Zantrix::IFF::IFFParser parse(const std::string& bytes) {
    std::istringstream is(bytes);
    Zantrix::IFF::IFFParser parser;
    parser.read(is);
    return parser;
}

inline std::string written(Zantrix::IFF::IFFParser parser) {
    std::ostringstream os;
    parser.write(os);
    return os.good() ? os.str() : "write failed: " + parser.getError();
}

/// "offset: text" of each finding, one a line.
inline std::string findings(const Zantrix::IFF::IFFParser& parser) {
    std::string text;
    for (const Zantrix::IFF::Finding& finding : parser.getFindings()) {
        text += std::to_string(finding.uiOffset) + ": " + finding.strText + "\n";
    }
    return text;
}

inline std::string content(const Zantrix::IFF::Chunk& chunk) {
    return chunk.getData() == nullptr ? "" : std::string(chunk.getData(), chunk.getSize());
}

}  // namespace wav
