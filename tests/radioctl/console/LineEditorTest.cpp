#include "radioctl/console/LineEditor.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <poll.h>
#include <pty.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cstdlib>
#include <functional>
#include <iostream>
#include <string>

namespace Radio {
namespace {

using testing::HasSubstr;
using testing::Not;

/** A line editor in a process of its own, at a terminal that the test holds the other end of. */
class LineEditorTest : public testing::Test {
public:
    LineEditorTest() { EXPECT_EQ(pipe(m_news.data()), 0); }
    ~LineEditorTest() override {
        close(m_news[0]);
        close(m_news[1]);
        close(m_terminal);
        kill(m_pid, SIGKILL);
        waitpid(m_pid, nullptr, 0);
    }

protected:
    /** Edits one line, whose idle hook is this, and shows it in brackets. */
    void start(const std::function<void()>& idle, const char* terminal = "xterm",
               unsigned short columns = 80) {
        winsize size{24, columns, 0, 0};
        m_pid = forkpty(&m_terminal, nullptr, nullptr, &size);
        if (m_pid == 0) {
            setenv("TERM", terminal, 1);
            const Board board;
            const BoardNames names(board);
            Interrupt interrupt;
            {
                LineEditor editor(names, interrupt, {});
                editor.setIdle(idle);
                const std::string line = editor.next().value_or("nothing");
                std::cout << "[" << line << "]" << std::endl;
            }
            _exit(0);
        }
    }
    /** An idle hook that says "news" once there are some. */
    std::function<void()> news() {
        return [this] {
            pollfd ready{m_news[0], POLLIN, 0};
            char one = 0;
            if (poll(&ready, 1, 0) > 0 && read(m_news[0], &one, 1) == 1) {
                std::cout << "news" << std::endl;
            }
        };
    }
    void tellNews() const { ASSERT_EQ(write(m_news[1], "!", 1), 1); }
    void type(const std::string& text) const {
        ASSERT_EQ(write(m_terminal, text.data(), text.size()), static_cast<ssize_t>(text.size()));
    }
    /** Reads until `text` comes, behind what was waited for before; false at the end or after 60 s of
     * silence. */
    bool waitFor(const std::string& text) {
        std::array<char, 4096> bytes{};
        pollfd ready{m_terminal, POLLIN, 0};
        std::size_t found = 0;
        while ((found = m_output.find(text, m_seen)) == std::string::npos) {
            const ssize_t count =
                poll(&ready, 1, 60'000) > 0 ? read(m_terminal, bytes.data(), bytes.size()) : -1;
            if (count <= 0) {
                return false;
            }
            m_output.append(bytes.data(), static_cast<std::size_t>(count));
        }
        m_seen = found + text.size();
        return true;
    }
    const std::string& output() const { return m_output; }

private:
    pid_t m_pid = -1;
    int m_terminal = -1;
    std::array<int, 2> m_news{-1, -1};
    std::string m_output;
    std::size_t m_seen = 0;
};

TEST_F(LineEditorTest, WhatTheIdleHookWritesStandsAboveTheLine) {
    start(news());
    ASSERT_TRUE(waitFor("radio> "));
    type("wait 1");
    ASSERT_TRUE(waitFor("wait 1"));
    tellNews();
    ASSERT_TRUE(waitFor("\r\033[Jnews\r\n"));
    ASSERT_TRUE(waitFor("radio> wait 1"));
    type("2\r");
    EXPECT_TRUE(waitFor("[wait 12]"));
}

TEST_F(LineEditorTest, LineOfSeveralRowsGivesWayAsAWhole) {
    start(news(), "xterm", 20);
    ASSERT_TRUE(waitFor("radio> "));
    // The prompt and this have 7 + 15 columns: the cursor is in the second row.
    type("expect writes 1");
    ASSERT_TRUE(waitFor("1"));
    tellNews();
    ASSERT_TRUE(waitFor("\033[1A\r\033[Jnews\r\n"));
    type("0\r");
    EXPECT_TRUE(waitFor("[expect writes 10]"));
}

TEST_F(LineEditorTest, IdleHookThatWritesNothingLeavesTheLineAlone) {
    start([] {});
    ASSERT_TRUE(waitFor("radio> "));
    usleep(600'000);
    type("quit\r");
    ASSERT_TRUE(waitFor("[quit]"));
    EXPECT_THAT(output(), Not(HasSubstr("\033[J")));
}

TEST_F(LineEditorTest, TerminalThatKnowsNoEscapesGetsALineOfItsOwn) {
    start(news(), "dumb");
    ASSERT_TRUE(waitFor("radio> "));
    tellNews();
    ASSERT_TRUE(waitFor("\r\nnews\r\n"));
    EXPECT_THAT(output(), Not(HasSubstr("\033[J")));
}

} // namespace
} // namespace Radio
