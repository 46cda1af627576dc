#ifndef RADIO_SESSION_HARDWAREMARK_H
#define RADIO_SESSION_HARDWAREMARK_H

#include <filesystem>
#include <string>

namespace Radio {

/**
 * Says on the disk that a program drives a device, or a file that stands for one. Whoever comes next, with
 * whatever board, learns from it that the device is in use, or that it was left as it was: the program was
 * killed, or the power went.
 */
class HardwareMark {
public:
    /**
     * `device` is its address or its path, `board` the file that describes it, `folder` where marks are kept;
     * it is made if need be. Marks nothing yet. Throws InputError when another program drives the device, and
     * when there can be no mark.
     */
    HardwareMark(const std::string& device, const std::filesystem::path& board,
                 const std::filesystem::path& folder);
    HardwareMark(const HardwareMark&) = delete;
    HardwareMark& operator=(const HardwareMark&) = delete;
    /** A mark that was set and not taken back stays. */
    ~HardwareMark();

    /** Who left the hardware as it was, "process 4711 on 2026-05-08 at 14:02:11"; empty: nobody. */
    const std::string& leftBehind() const { return m_leftBehind; }

    /** Has the mark on the disk when it returns. Throws InputError. */
    void set();
    /** The hardware was left as it is to be. A mark that cannot be taken back stays. */
    void takeBack();

private:
    [[noreturn]] void fail(const char* what) const;
    bool write(const std::string& text);

    std::filesystem::path m_file;
    /** What stands in it below who set it. */
    std::string m_text;
    std::string m_leftBehind;
    int m_descriptor = -1;
};

} // namespace Radio

#endif
