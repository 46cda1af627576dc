#ifndef SERVICE_RADIO_BODY_H
#define SERVICE_RADIO_BODY_H

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace Radio::Service {

/**
 * The members of a JSON object that somebody sent, or that stands in a file of ours. Whatever is not as
 * expected throws std::invalid_argument, which names the member and says what it has to be.
 */
class Body {
public:
    /** `text` may be any bytes. */
    explicit Body(std::string_view text);
    Body(const Body&) = delete;
    Body& operator=(const Body&) = delete;
    ~Body();

    std::int64_t integer(const char* name, std::int64_t low, std::int64_t high);
    /** Nothing when there is no such member, or it is null. */
    std::optional<std::int64_t> optionalInteger(const char* name, std::int64_t low, std::int64_t high);
    std::string text(const char* name);
    /** Empty when there is none. */
    std::string optionalText(const char* name);
    /** `otherwise` when there is none. */
    bool flag(const char* name, bool otherwise = false);
    /** Nothing when there is none. */
    std::optional<double> optionalNumber(const char* name);
    /** From one to `most` of 32 bits each. */
    std::vector<std::int32_t> integers(const char* name, std::size_t most);
    /** From `least` to `most` within low and high; empty when there is no such member, or it is null. */
    std::vector<std::int32_t> optionalIntegers(const char* name, std::size_t least, std::size_t most,
                                               std::int32_t low, std::int32_t high);
    /** The names of an object's members, which are integers; nothing when there is no such member. */
    std::vector<std::pair<std::string, std::int64_t>> numbersByName(const char* name, std::int64_t low,
                                                                    std::int64_t high);
    /** To be called when everything was asked for: throws for members that nobody knows. */
    void end() const;

private:
    struct Content;
    std::unique_ptr<Content> m_content;
};

} // namespace Radio::Service

#endif
