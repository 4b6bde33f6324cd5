// Files of all writers: chunks in any order, padded or not, with odd sizes. An edit changes the annotations, nothing
// else.
#include <murvane/audio/annotations/AudioAnnotatedFile.h>
#include <testkit/WavBytes.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <sstream>
#include <string>
#include <vector>

namespace {

using Zantrix::Audio::AnnotatedFile;
using Zantrix::Audio::AnnotationImpl;
using namespace wav;

using Random = std::mt19937;

std::string randomBytes(Random& random, std::size_t size) {
    std::string bytes(size, '\0');
    for (char& byte : bytes) {
        // Zeros as in silence, which look like padding and like small sizes.
        byte = random() % 3 == 0 ? static_cast<char>(random()) : '\0';
    }
    return bytes;
}

class Writer {
public:
    explicit Writer(Random& random) : m_random(random), m_bPads(random() % 2 == 0) {}

    std::string chunk(const std::string& id, const std::string& content) const {
        const bool isPadded = m_bPads && content.size() % 2 != 0;
        return id + u32(static_cast<std::uint32_t>(content.size())) + content + zeros(isPadded ? 1 : 0);
    }

    std::string recording(const std::string& audio) const {
        const std::string fmt = u16(1) + u16(1) + u32(8000) + u32(8000) + u16(1) + u16(8);
        std::vector<std::string> chunks{chunk("data", audio)};
        const char* const others[] = {"junk", "bext", "smpl", "PEAK", "id3 "};
        for (std::size_t count = m_random() % 5; count > 0; --count) {
            chunks.push_back(chunk(others[m_random() % std::size(others)], randomBytes(m_random, m_random() % 50)));
        }
        if (m_random() % 2 == 0) {
            const std::string text(1 + m_random() % 9, 't');
            chunks.push_back(chunk("LIST", "INFO" + chunk("ISFT", text)));
        }
        if (m_random() % 2 == 0) {
            chunks.push_back(chunk("cue ", u32(1) + cueRecord(0, 1)));
            const std::string label = u32(0) + std::string(m_random() % 5, 'l') + zeros(1);
            chunks.push_back(chunk("LIST", "adtl" + ltxt(0, 2) + chunk("labl", label)));
        }
        std::shuffle(chunks.begin(), chunks.end(), m_random);
        std::string all = chunk("fmt ", fmt);
        for (const std::string& one : chunks) {
            all += one;
        }
        return file(all);
    }

private:
    Random& m_random;
    bool m_bPads;
};

/// What is not about annotations, in order.
std::string otherChunks(const AnnotatedFile& file) {
    std::string text;
    for (const Zantrix::IFF::Chunk& chunk : file.getParser().getChunks()) {
        const bool isAnnotations = chunk.getId() == Zantrix::IFF::ChunkId("cue ") ||
                                   (chunk.getList() && chunk.getList()->getType() == Zantrix::IFF::ChunkId("adtl"));
        if (isAnnotations) {
            continue;
        }
        text += chunk.getId().toString() + std::string(chunk.getData() ? chunk.getData() : "", chunk.getSize());
        for (const Zantrix::IFF::Chunk& child : chunk.getList() ? *chunk.getList() : Zantrix::IFF::ChunkList()) {
            text += child.getId().toString() + std::string(child.getData(), child.getSize());
        }
    }
    return text;
}

bool read(AnnotatedFile& file, const std::string& bytes) {
    std::istringstream is(bytes);
    return !file.readFromWAV(is).fail();
}

TEST(AnnotatedFilesOfAllWriters, KeepEverythingButTheirAnnotationsThroughEdits) {
    Random random(20261121);
    for (int i = 0; i < 3000; ++i) {
        const std::string bytes = Writer(random).recording(randomBytes(random, random() % 60));
        AnnotatedFile file;
        ASSERT_TRUE(read(file, bytes)) << i << ": " << file.getError();
        const std::string others = otherChunks(file);
        for (int edit = 0; edit < 3; ++edit) {
            const std::size_t before = file.m_vAnnotations.size();
            file.m_vAnnotations.emplace_back(new AnnotationImpl);
            const std::string label(random() % 4, 'x');
            file.m_vAnnotations.back()->setLabel(label.c_str());
            std::ostringstream os;
            ASSERT_FALSE(file.writeToWAV(os).fail()) << i << ": " << file.getError();
            ASSERT_TRUE(read(file, os.str())) << i << ": " << file.getError();
            ASSERT_EQ(file.m_vAnnotations.size(), before + 2) << i << ", edit " << edit;
            ASSERT_EQ(file.m_vAnnotations.back()->getLabel(), label) << i << ", edit " << edit;
            ASSERT_TRUE(otherChunks(file) == others) << i << ", edit " << edit;
        }
    }
}

}  // namespace
