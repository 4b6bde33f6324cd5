#pragma once

#include "annotations/AnnotationReading.h"
#include "shell/Options.h"

#include <cstddef>
#include <string>
#include <vector>

/// Edits of the annotations of one file, for all actions that write.
namespace Zantrix::Cli {

struct EditOptions {
    ReadOptions read;
    bool isDryRun = false;
    bool keepsBackup = false;
    LogOptions log;
};

/// Adds the options that all edits share.
void addEditOptions(boost::program_options::options_description& description, EditOptions& options);

/// 1. `load` takes the file's annotations.
/// 2. `annotations`, `append` and `clear` change them in memory.
/// 3. `save` writes the file, unless nothing changed or it is only to be told, and tells what changed; or `saveCopy`
///    writes another file.
///
/// Failures are reported, and leave the file as it was; one is an annotation that begins beyond the end of the audio.
/// What cannot be kept, and what ends beyond the end of the audio and is cut off there, is warned of.
class AnnotationEdit {
public:
    AnnotationEdit(std::string path, const EditOptions& options, Diagnostics& diagnostics);

    bool load();

    /// Of the file as it is now edited.
    std::vector<SampledLabel>& annotations() { return m_recording.annotations; }
    std::uint32_t rate() const { return m_recording.rate; }

    /// Appends annotations that all begin within the audio; appends none if one does not, or makes no sense.
    ///
    /// @param source  what goes before their numbers in messages, such as "labels.txt: "
    bool append(const std::vector<TimedLabel>& labels, const std::string& source);

    /// Removes all annotations and, when the file is saved, whatever is left of others.
    void clear();

    bool save();

    /// Says nothing if all goes well.
    bool saveCopy(const std::string& path);

private:
    bool isChanged() const;
    std::string whyRefused(const TimedLabel& label) const;
    bool checkStarts();
    void cutOffAtEnd();
    bool prepare();
    bool checkWritable();
    bool hasChangedOnDisk() const;
    bool replace(std::string& backup);
    bool write(const std::string& path);
    bool report(const std::string& backup);

    const std::string m_strPath;
    const EditOptions m_options;
    Diagnostics& m_diagnostics;
    LoadedFile m_loaded;
    Recording m_recording;
    std::vector<SampledLabel> m_before;
    bool m_bClearsAll = false;
};

}  // namespace Zantrix::Cli
