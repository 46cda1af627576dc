#ifndef RADIO_FILES_ATOMICFILE_H
#define RADIO_FILES_ATOMICFILE_H

#include <filesystem>
#include <fstream>
#include <ostream>

namespace Radio {

/**
 * A text file that is there as a whole or not at all. It is written beside the place where it belongs, and
 * put there by commit(); until then, and if anything goes wrong, whatever was there before stays as it was.
 *
 * A place that is no ordinary file (a device, a pipe) is written directly.
 */
class AtomicFile {
public:
    /** Opens the file. Throws InputError when it cannot be written there. */
    explicit AtomicFile(const std::filesystem::path& place);
    AtomicFile(const AtomicFile&) = delete;
    AtomicFile& operator=(const AtomicFile&) = delete;
    /** Without commit() there was never anything. */
    ~AtomicFile();

    std::ostream& stream() { return m_stream; }
    /** Puts the file in its place, on the disk. Throws InputError when something could not be written. */
    void commit();
    /** The same, where nothing is yet; throws also when something is there by now. */
    void commitNew();

private:
    [[noreturn]] void fail(const char* what) const;
    void createBeside();
    void putInPlace(unsigned flags);

    /** As the user calls it. */
    std::filesystem::path m_name;
    /** Where it belongs, behind all symbolic links that lead somewhere. */
    std::filesystem::path m_place;
    /** Where it is written meanwhile; empty for one that is written directly. */
    std::filesystem::path m_beside;
    std::ofstream m_stream;
};

/**
 * Gives what is at `file` a second name that nothing has yet: FILE.~1~, FILE.~2~ and so on. The file itself
 * stays where it is. Returns the new name, or an empty one when there is no ordinary file. Throws InputError.
 */
std::filesystem::path keepBackup(const std::filesystem::path& file);

/** The same, but the file is not there any more under its own name. Throws InputError. */
std::filesystem::path moveToBackup(const std::filesystem::path& file);

/** Gives a file that moveToBackup() renamed its own name back, unless something has that name by now. */
void moveBack(const std::filesystem::path& backup, const std::filesystem::path& file);

/** Throws InputError when nothing can be written to `file`; writes nothing. An empty name is good. */
void requireWritable(const std::filesystem::path& file);

/** True when both names mean one ordinary file, whether or not it exists yet. */
bool isSameFile(const std::filesystem::path& one, const std::filesystem::path& other);

} // namespace Radio

#endif
