#include <murvane/core/FileReplacementBuffer.h>

namespace Zantrix {

FileReplacementBuffer::FileReplacementBuffer(FileReplacement& file) : m_file(file) {
    setp(m_aBytes.data(), m_aBytes.data() + m_aBytes.size());
}

FileReplacementBuffer::int_type FileReplacementBuffer::overflow(int_type character) {
    if (sync() != 0) {
        return traits_type::eof();
    }
    if (!traits_type::eq_int_type(character, traits_type::eof())) {
        sputc(traits_type::to_char_type(character));
    }
    return traits_type::not_eof(character);
}

std::streamsize FileReplacementBuffer::xsputn(const char* bytes, std::streamsize size) {
    // The samples of a recording come in one piece: no need to copy them.
    if (size < epptr() - pptr()) {
        return std::streambuf::xsputn(bytes, size);
    }
    return sync() == 0 && m_file.write(bytes, static_cast<std::size_t>(size)) ? size : 0;
}

int FileReplacementBuffer::sync() {
    const auto size = static_cast<std::size_t>(pptr() - pbase());
    if (size > 0 && !m_file.write(pbase(), size)) {
        return -1;
    }
    setp(m_aBytes.data(), m_aBytes.data() + m_aBytes.size());
    return 0;
}

}  // namespace Zantrix
