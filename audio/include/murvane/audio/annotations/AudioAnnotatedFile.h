#pragma once

#include <murvane/audio/annotations/AudioAnnotation.h>
#include <murvane/core/CloneableObjPtr.h>
#include <murvane/core/FileStamp.h>
#include <murvane/iff/IFFParser.h>

#include <cstdint>
#include <iosfwd>
#include <string>
#include <vector>

namespace Zantrix::Audio {

/// A mono WAV file with its annotations inside: each is a cue point, an interval ("ltxt") and a label ("labl") of
/// the file itself, so that a recording and its labels travel together. The samples and all other chunks pass through
/// untouched.
///
/// 1. `readFromWAV` takes a whole file; its annotations are then in `m_vAnnotations`.
/// 2. The program edits that list.
/// 3. `writeToWAV` writes the file with the list as it is now.
///
/// Cue points are numbered from 1 when written, and their numbers are positions in the list, from 0, when read. So what
/// was written reads back with one empty annotation in front ("SF_MIN", 0 s to 0 s), and so does every gap among the
/// numbers. Other programs count from 1, and files are full of that: neither side can change any more.
///
/// Copies share the bytes of the file and clone the annotations. An object is used by one thread at a time.
class MURVANE_API AnnotatedFile {
public:
    /// Cue points are read whose identifiers are below this. An identifier is the place in a list that gets so long: a
    /// stranger's must not be able to ask for all memory.
    static constexpr std::uint32_t c_uiEndOfCueNumbers = std::uint32_t{1} << 20;

    /// The annotations, in the order of their cue numbers after a read. A write needs less than 2^20, none of them
    /// null.
    std::vector<CloneableObjPtr<Annotation>> m_vAnnotations;

    /// Reads a WAV file to the end of the stream, in place of what the object held. Annotations are `AnnotationImpl`;
    /// whoever wants them typed hands their labels to `AnnotationBuilder`.
    ///
    /// The fail bit tells of failure: no WAV file, no fmt or data chunk, not mono, less than 8 bits a sample, no sample
    /// rate; a cue point without interval or label or the reverse; a cue number of 2^20 or more. Each is
    /// reported, and `getError` says which; the list is then empty. An interval or label with a number beyond all cue
    /// points is reported and skipped.
    std::istream& readFromWAV(std::istream& is);

    /// Writes the file with its annotation chunks ("cue ", "ltxt", "labl", "note", wherever they stand) replaced by
    /// those of the list. What reaches past the end of the audio is cut off there, and reported.
    ///
    /// The fail bit tells of failure, and that nothing was written unless the stream itself failed; `getError` says
    /// why. The annotation chunks in memory are gone after some failures; the list is as it was, and a later write
    /// makes them anew.
    std::ostream& writeToWAV(std::ostream& os);

    /// Reads a file on disk, as `readFromWAV` does.
    ///
    /// @return false when it cannot be opened, is no file to annotate, or changed while it was read; `getError` tells
    bool loadFile(const std::string& path);

    /// Puts the file with its annotations on disk: the target has its old content or its new one, never a part. Links
    /// are followed; mode and owner stay. Only where the folder takes no new file is the target written in place.
    ///
    /// @return false when that fails, and when `path` is where the file was loaded from but is not the file that was
    ///         loaded any more; the target is then as it was, and `getError` tells why
    bool saveFile(const std::string& path);

    /// Why the last of the four operations above failed, in words; empty after success.
    const std::string& getError() const { return m_strError; }

    /// Of the audio, as last read or written: samples per second, and how many samples there are.
    std::uint32_t getSampleRate() const { return m_uiSampleRate; }
    std::uint32_t getNbOfSamples() const { return m_uiNbOfSamples; }

    /// The chunks of the file.
    const IFF::IFFParser& getParser() const { return m_parser; }

    /// The sample at a time, to the nearest: halves go up, NaN and times before 0 give 0, huge ones 2^32 - 1.
    static std::uint32_t toSample(double seconds, std::uint32_t sampleRate);

    /// @name Edits of files on disk
    /// Each reads one or two WAV files whole, changes the list of the last one, and replaces that file as `saveFile`
    /// does. False after one ERROR record; the files are then as they were. The gaps described above are kept, so each
    /// edit of a file written here adds an empty annotation in front.
    /// @{

    /// Replaces the annotations of `out` by those of `in`.
    static bool copyAnnotations(const char* in, const char* out);

    /// Removes all annotations.
    static bool clearAnnotations(const char* file);

    /// Removes the annotations whose whole label matches an expression in Perl syntax, without regard to case, and
    /// reports at INFO how many these were.
    static bool clearAnnotations(const char* file, const char* regex);

    /// Appends the annotations of `in` to those of `out`.
    static bool addAnnotations(const char* in, const char* out);

    /// Appends a clone of one annotation.
    static bool addAnnotation(const char* file, const Annotation& annotation);

    /// @}

private:
    struct AnnotationContents;

    /// How far an exchange with a file on disk came.
    enum class Stage { NotOpened, NotTransferred, Done };

    bool readWavProperties();
    bool readAnnotations();
    void createAnnotation(const Annotation& annotation, unsigned id, AnnotationContents& contents) const;
    IFF::ChunkList* clearAnnotations();
    bool removeEmptied(const IFF::ChunkList& list);
    void appendAnnotations(IFF::ChunkList* pOldList);
    bool refuse(const std::string& reason);

    Stage loadFrom(const std::string& path);
    Stage storeTo(const std::string& path);
    static bool isDone(Stage stage, const char* couldNotOpen, const char* couldNotTransfer, const char* path);

    IFF::IFFParser m_parser;
    std::uint32_t m_uiSampleRate = 0;
    std::uint32_t m_uiNbOfSamples = 0;
    std::string m_strError;
    std::string m_strLoadedFrom;  // empty unless from a file on disk
    FileStamp m_loaded;           // of that file
};

}  // namespace Zantrix::Audio
