#ifndef RADIO_FILES_ATOMICFILE_H
#define RADIO_FILES_ATOMICFILE_H

#include "radio/files/DescriptorStream.h"

#include <sys/stat.h>
#include <sys/types.h>

#include <filesystem>
#include <ostream>
#include <string>
#include <utility>

namespace Radio {

/**
 * A text file that is there as a whole or not at all. It is written beside the place where it belongs, and
 * put there by commit(); until then, and if anything goes wrong, whatever was there before stays as it was.
 *
 * It is looked up by its name once, when it is made, and written through that descriptor: who may write in
 * the same directory cannot have another file written. A place that is no ordinary file (a device, a pipe),
 * and the one that standard output leads to, is written directly, unless it is another file by then.
 *
 * A link is followed unless somebody else made it in a directory where everybody may make files.
 *
 * The file keeps the permissions of the one that it replaces, and its group and owner as far as this user may
 * give them, which is remarked where he may not; to whom a file belongs that is not the same any more, that
 * does not have its set-id bits, nor has what took the place of another file meanwhile.
 *
 * Who is killed meanwhile leaves NAME.XXXXXX.part behind. Whoever writes the same file the next time remarks
 * that; what is being written just now counts as none.
 */
class AtomicFile {
public:
    /** Opens the file, and waits until somebody reads it if it is a pipe. Throws InputError when it cannot be
     * written there; GivenUp, also later, when a signal ends a wait. */
    explicit AtomicFile(const std::filesystem::path& place);
    AtomicFile(const AtomicFile&) = delete;
    AtomicFile& operator=(const AtomicFile&) = delete;
    /** Without commit() there was never anything. */
    ~AtomicFile();

    std::ostream& stream() { return m_stream; }
    /** Puts the file in its place, on the disk. Throws InputError when something could not be written, or
     * when somebody put something else in the place where it was written. */
    void commit();
    /** The same, where nothing is yet, for a file that is written on: its owner may, whatever the umask says.
     * Throws also when something is there by now. */
    void commitNew();

private:
    [[noreturn]] void fail(const std::string& what, int reason) const;
    int openPatiently(bool isPipe) const;
    bool wasSeen(const struct stat& file) const;
    void openDirectly(int descriptor);
    void createBeside();
    void takeOver(mode_t needed);
    void remarkOnOwners(const std::pair<unsigned, unsigned>& before) const;
    void remarkOnWhatWasLeft() const;
    void writeAll(mode_t needed);
    bool isStillBeside() const;

    /** As the user calls it. */
    std::filesystem::path m_name;
    /** Where it belongs, behind all symbolic links that lead somewhere. */
    std::filesystem::path m_place;
    /** Device and number of the file that was there at first. */
    std::pair<dev_t, ino_t> m_seen;
    /** Where it is written meanwhile; empty for one that is written directly. */
    std::filesystem::path m_beside;
    int m_descriptor = -1;
    DescriptorStream m_stream;
};

/** Is told what a user should know of a file that was written, or that is there. */
using FileRemark = void (*)(const std::string& remark);
/** Who is told in this process; null, as at the beginning: nobody. */
void setFileRemark(FileRemark remark);

/** Throws InputError when nothing can be written to `file`; writes nothing. An empty name is good. */
void requireWritable(const std::filesystem::path& file);

/** True for a name that leads where standard output leads, "/dev/stdout" for example. */
bool isStandardOutput(const std::filesystem::path& file);

/** True when both names mean one ordinary file, whether or not it exists yet. */
bool isSameFile(const std::filesystem::path& one, const std::filesystem::path& other);

} // namespace Radio

#endif
