#ifndef TESTS_DEVICES_INSTRUMENT_H
#define TESTS_DEVICES_INSTRUMENT_H

#include <atomic>
#include <chrono>
#include <functional>
#include <map>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

namespace DeviceTests {

/** What an instrument does when it has read a line. */
struct Reaction {
    std::string says{};
    std::chrono::milliseconds after{0};
    bool hangsUp = false;
};

/** An instrument on the loopback that does what it is told to. */
class Instrument {
public:
    using Script = std::function<Reaction(const std::string& line)>;

    explicit Instrument(Script script);
    Instrument(const Instrument&) = delete;
    Instrument& operator=(const Instrument&) = delete;
    ~Instrument() { switchOff(); }

    std::string address() const { return "127.0.0.1:" + std::to_string(m_port); }
    void setScript(Script script);
    /** What it has read, since the last call. */
    std::vector<std::string> heard();
    /** How often somebody connected. */
    int connections() const { return m_connections; }
    void switchOff();
    void switchOn();

private:
    void run();
    void accept();
    bool serve(int client);
    bool react(int client, const std::string& line);

    int m_port;
    int m_listener = -1;
    std::map<int, std::string> m_clients;
    std::atomic<bool> m_isEnding{false};
    std::atomic<int> m_connections{0};
    std::mutex m_mutex;
    Script m_script;
    std::vector<std::string> m_heard;
    std::thread m_thread;
};

} // namespace DeviceTests

#endif
