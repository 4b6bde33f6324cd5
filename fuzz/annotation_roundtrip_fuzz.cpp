// A list of annotations made of any bytes, written into a file and read back.
#include "QuietLog.h"
#include "Require.h"

#include <murvane/audio/annotations/AudioAnnotatedFile.h>
#include <murvane/iff/ByteCursor.h>
#include <testkit/WavBytes.h>

#include <algorithm>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <sstream>
#include <string>
#include <string_view>

namespace {

using namespace Zantrix;
using Audio::AnnotatedFile;

// Values out of the input; 0 when it is used up.
template <typename T>
T take(IFF::ByteCursor& input) {
    T value = 0;
    input.read(value);
    return value;
}

// A mono file of 8-bit samples, which may be odd in number.
std::string recording(std::uint32_t rate, std::uint16_t samples) {
    using wav::u16;
    using wav::u32;
    const std::string fmt = u16(1) + u16(1) + u32(rate) + u32(rate) + u16(1) + u16(8);
    return wav::file(wav::chunk("fmt ", fmt) + wav::chunk("data", std::string(samples, 'a')));
}

// A time: half of them near the samples of the recording, half any double at all.
double takeTime(IFF::ByteCursor& input, double rate) {
    const auto kind = take<std::uint8_t>(input);
    return kind % 2 == 0 ? take<std::uint16_t>(input) / rate : std::bit_cast<double>(take<std::uint64_t>(input));
}

std::string takeLabel(IFF::ByteCursor& input) {
    std::string_view label;
    input.read(std::min<std::size_t>(take<std::uint8_t>(input) % 40U, input.remaining()), label);
    return std::string(label.substr(0, label.find('\0')));
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    IFF::ByteCursor input(std::string_view(reinterpret_cast<const char*>(data), size));
    const std::uint32_t rate = std::max<std::uint32_t>(1, take<std::uint32_t>(input));
    const std::string plain = recording(rate, take<std::uint16_t>(input));

    AnnotatedFile file;
    std::istringstream is(plain);
    require(!file.readFromWAV(is).fail(), "the recording can be read");
    while (!input.isAtEnd()) {
        auto* pAnnotation = new Audio::AnnotationImpl;
        file.m_vAnnotations.emplace_back(pAnnotation);
        pAnnotation->setStartTime(takeTime(input, rate));
        pAnnotation->setStopTime(takeTime(input, rate));
        pAnnotation->setLabel(takeLabel(input).c_str());
    }

    std::ostringstream os;
    require(!file.writeToWAV(os).fail(), "any list can be written");
    AnnotatedFile again;
    std::istringstream written(os.str());
    require(!again.readFromWAV(written).fail(), "what was written can be read");
    const std::size_t count = file.m_vAnnotations.size();
    require(again.m_vAnnotations.size() == (count == 0 ? 0 : count + 1), "one more in front");
    const std::uint32_t end = file.getNbOfSamples();
    for (std::size_t i = 0; i < count; ++i) {
        const Audio::Annotation& in = *file.m_vAnnotations[i];
        const Audio::Annotation& out = *again.m_vAnnotations[i + 1];
        const std::uint32_t start = std::min(AnnotatedFile::toSample(in.getStartTime(), rate), end);
        const std::uint32_t length =
            std::min(AnnotatedFile::toSample(in.getStopTime() - in.getStartTime(), rate), end - start);
        require(out.getLabel() == in.getLabel(), "the label comes back");
        require(out.getStartTime() == start / static_cast<double>(rate), "the start comes back, to the sample");
        require(out.getStopTime() == out.getStartTime() + length / static_cast<double>(rate),
                "the stop comes back, to the sample");
    }

    again.m_vAnnotations.clear();
    std::ostringstream cleared;
    require(!again.writeToWAV(cleared).fail(), "all can be removed");
    require(cleared.str() == plain, "what is left is the recording");
    return 0;
}
