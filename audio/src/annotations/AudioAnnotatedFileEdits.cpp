#include "AnnotationDiagnostics.h"

#include <murvane/audio/annotations/AudioAnnotatedFile.h>
#include <murvane/core/Assertion.h>
#include <murvane/core/BoostRegex.h>
#include <murvane/core/FileReplacement.h>
#include <murvane/core/FileReplacementBuffer.h>
#include <murvane/core/Text.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <fstream>
#include <iterator>
#include <ostream>
#include <stdexcept>

// Exchange of annotated files with the disk.
namespace Zantrix::Audio {

namespace {

// What records say of failures, as filters match them: "ile", "Could not file" and "out_file" are no slips of this
// source.
constexpr const char* c_szInputNotOpened = "Could not open input file : ";
constexpr const char* c_szInputNotParsed = "Error parsing input WAV file : ";
constexpr const char* c_szOutputNotReadable = "Could not open output file for reading: ";
constexpr const char* c_szOutputNotParsed = "Error parsing output WAV file : ";
constexpr const char* c_szOutputNotWritable = "Could not open output file for writing: ";
constexpr const char* c_szCopyNotWritable = "Could not open out_file for writing: ";
constexpr const char* c_szClearedNotReadable = "Could not open ile for reading: ";
constexpr const char* c_szClearedNotWritable = "Could not file for writing: ";
constexpr const char* c_szNotOpened = "Could not open file : ";
constexpr const char* c_szNotParsed = "Error parsing WAV file : ";
constexpr const char* c_szNotWritten = "Error writing WAV file : ";

}  // namespace

bool AnnotatedFile::loadFile(const std::string& path) {
    return loadFrom(path) == Stage::Done;
}

bool AnnotatedFile::saveFile(const std::string& path) {
    return storeTo(path) == Stage::Done;
}

AnnotatedFile::Stage AnnotatedFile::loadFrom(const std::string& path) {
    // Before the file is opened: a file put in its place from here on is another one.
    const FileStamp stamp = FileStamp::of(path);
    std::ifstream is(path, std::ios::binary);
    if (!is) {
        m_strError = std::strerror(errno);
        return Stage::NotOpened;
    }
    if (!readFromWAV(is)) {
        return Stage::NotTransferred;
    }
    if (FileStamp::of(path) != stamp) {
        m_vAnnotations.clear();
        m_strError = "it changed while it was read";
        return Stage::NotTransferred;
    }
    m_strLoadedFrom = path;
    m_loaded = stamp;
    return Stage::Done;
}

AnnotatedFile::Stage AnnotatedFile::storeTo(const std::string& path) {
    FileReplacement file;
    if (!file.open(path, FileReplacement::InPlace::Allowed)) {
        m_strError = file.getError();
        return Stage::NotOpened;
    }
    FileReplacementBuffer buffer(file);
    std::ostream os(&buffer);
    if (!writeToWAV(os) || !os.flush()) {
        if (m_strError.empty()) {
            m_strError = file.getError();
        }
        return Stage::NotTransferred;
    }
    const bool isOwn = path == m_strLoadedFrom;
    if (isOwn && FileStamp::of(path) != m_loaded) {
        m_strError = "it changed since it was read";
        return Stage::NotTransferred;
    }
    if (!file.commit()) {
        m_strError = file.getError();
        return Stage::NotTransferred;
    }
    if (isOwn) {
        m_loaded = FileStamp::of(path);
    }
    return Stage::Done;
}

bool AnnotatedFile::isDone(Stage stage, const char* couldNotOpen, const char* couldNotTransfer, const char* path) {
    if (stage != Stage::Done) {
        annotationLogger().log(LogLevel::Error, c_szAnnotationSource, __LINE__,
                               stage == Stage::NotOpened ? couldNotOpen : couldNotTransfer, Text::orEmpty(path));
    }
    return stage == Stage::Done;
}

bool AnnotatedFile::copyAnnotations(const char* in, const char* out) {
    AnnotatedFile source;
    AnnotatedFile target;
    if (!isDone(source.loadFrom(Text::orEmpty(in)), c_szInputNotOpened, c_szInputNotParsed, in) ||
        !isDone(target.loadFrom(Text::orEmpty(out)), c_szOutputNotReadable, c_szOutputNotParsed, out)) {
        return false;
    }
    target.m_vAnnotations = source.m_vAnnotations;
    return isDone(target.storeTo(Text::orEmpty(out)), c_szCopyNotWritable, c_szNotWritten, out);
}

bool AnnotatedFile::clearAnnotations(const char* file) {
    AnnotatedFile target;
    if (!isDone(target.loadFrom(Text::orEmpty(file)), c_szClearedNotReadable, c_szNotParsed, file)) {
        return false;
    }
    target.m_vAnnotations.clear();
    return isDone(target.storeTo(Text::orEmpty(file)), c_szClearedNotWritable, c_szNotWritten, file);
}

bool AnnotatedFile::clearAnnotations(const char* file, const char* regex) {
    AnnotatedFile target;
    if (!isDone(target.loadFrom(Text::orEmpty(file)), c_szClearedNotReadable, c_szNotParsed, file)) {
        return false;
    }
    auto& annotations = target.m_vAnnotations;
    const std::size_t before = annotations.size();
    try {
        // A file without annotations never compiles the expression, and so never stumbles over it.
        if (!annotations.empty()) {
            const BoostRegex expression(Text::orEmpty(regex));
            const auto isMatch = [&](const CloneableObjPtr<Annotation>& pAnnotation) {
                return expression.matches(pAnnotation->getLabel());
            };
            annotations.erase(std::remove_if(annotations.begin(), annotations.end(), isMatch), annotations.end());
        }
    } catch (const std::runtime_error&) {
        annotationLogger().log(LogLevel::Error, c_szAnnotationSource, __LINE__,
                               "Unexpected std::runtime exception caught in clearAnnotations with regex: \"",
                               Text::orEmpty(regex), '"');
        return false;
    }
    annotationLogger().log(LogLevel::Info, c_szAnnotationSource, __LINE__, "Number of annotations cleared in file ",
                           Text::orEmpty(file), " : ", before - annotations.size());
    return isDone(target.storeTo(Text::orEmpty(file)), c_szClearedNotWritable, c_szNotWritten, file);
}

bool AnnotatedFile::addAnnotations(const char* in, const char* out) {
    AnnotatedFile source;
    AnnotatedFile target;
    if (!isDone(source.loadFrom(Text::orEmpty(in)), c_szInputNotOpened, c_szInputNotParsed, in) ||
        !isDone(target.loadFrom(Text::orEmpty(out)), c_szOutputNotReadable, c_szOutputNotParsed, out)) {
        return false;
    }
    target.m_vAnnotations.insert(target.m_vAnnotations.end(), source.m_vAnnotations.begin(),
                                 source.m_vAnnotations.end());
    return isDone(target.storeTo(Text::orEmpty(out)), c_szOutputNotWritable, c_szNotWritten, out);
}

bool AnnotatedFile::addAnnotation(const char* file, const Annotation& annotation) {
    AnnotatedFile target;
    if (!isDone(target.loadFrom(Text::orEmpty(file)), c_szNotOpened, c_szNotParsed, file)) {
        return false;
    }
    CloneableObjPtr<Annotation> pClone(annotation.clone());
    if (!Assertion(!pClone.isNull(), "!pClone.isNull()", c_szAnnotationSource, __LINE__)) {
        return false;
    }
    target.m_vAnnotations.push_back(std::move(pClone));
    return isDone(target.storeTo(Text::orEmpty(file)), c_szOutputNotWritable, c_szNotWritten, file);
}

}  // namespace Zantrix::Audio
