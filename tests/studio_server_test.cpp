/// The studio as a program: its start and end, its web server among bad senders, and the command on its
/// board.

#include <arpa/inet.h>
#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <netinet/in.h>
#include <poll.h>
#include <signal.h>
#include <spawn.h>
#include <sys/socket.h>
#include <unistd.h>

#include <array>
#include <chrono>
#include <filesystem>
#include <fstream>
#include <string>
#include <thread>
#include <vector>

#include <nlohmann/json.hpp>

#include "tests/RunCommand.h"
#include "tests/TemporaryFile.h"

namespace {

using marovine::test::joined;
using marovine::test::run;
using testing::AllOf;
using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;
using Clock = std::chrono::steady_clock;

/// A studio that runs.
class Studio {
 public:
    explicit Studio(std::vector<std::string> options = {}) {
        options.insert(options.begin(), {MAROVINE_STUDIO, "studio", "--no-browser"});
        std::vector<char*> arguments;
        for (auto& option : options) arguments.push_back(option.data());
        arguments.push_back(nullptr);
        std::array<int, 2> ends{};
        if (pipe2(ends.data(), O_CLOEXEC) != 0) return;
        posix_spawn_file_actions_t actions;
        posix_spawn_file_actions_init(&actions);
        posix_spawn_file_actions_adddup2(&actions, ends[1], STDOUT_FILENO);
        const auto begin = Clock::now();
        posix_spawn(&process_, MAROVINE_STUDIO, &actions, nullptr, arguments.data(), environ);
        posix_spawn_file_actions_destroy(&actions);
        close(ends[1]);
        char c = 0;
        while (read(ends[0], &c, 1) == 1 && c != '\n') line += c;
        started = Clock::now() - begin;
        close(ends[0]);
        address = line.substr(line.find("http"));
        port = static_cast<unsigned short>(std::stoi(address.substr(address.find(':', 7) + 1)));
    }
    Studio(const Studio&) = delete;
    Studio& operator=(const Studio&) = delete;
    ~Studio() { end(SIGKILL); }

    /// Its exit status after a signal; -1 when the signal itself ended it.
    int end(int signal) {
        if (process_ == 0) return 0;
        kill(process_, signal);
        int status = 0;
        waitpid(process_, &status, 0);
        process_ = 0;
        return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    }

    std::string line;
    std::string address;
    unsigned short port = 0;
    Clock::duration started{};

 private:
    pid_t process_ = 0;
};

/// A connection that sends whatever it likes.
class Raw {
 public:
    explicit Raw(unsigned short port) : socket_(socket(AF_INET, SOCK_STREAM, 0)) {
        sockaddr_in address{};
        address.sin_family = AF_INET;
        address.sin_port = htons(port);
        address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        EXPECT_EQ(connect(socket_, reinterpret_cast<const sockaddr*>(&address), sizeof address), 0);
    }
    Raw(const Raw&) = delete;
    Raw& operator=(const Raw&) = delete;
    ~Raw() { close(socket_); }

    void send(const std::string& text) const {
        for (std::size_t done = 0; done < text.size();) {
            const auto count = ::send(socket_, text.data() + done, text.size() - done, MSG_NOSIGNAL);
            if (count <= 0) return;
            done += static_cast<std::size_t>(count);
        }
    }
    /// What comes until it ends, holds `until`, or nothing comes for long.
    std::string read(const std::string& until = "") const {
        constexpr int kPatience = 5000;
        std::string text;
        std::array<char, 65536> buffer{};
        for (pollfd wait{.fd = socket_, .events = POLLIN, .revents = 0}; poll(&wait, 1, kPatience) == 1;) {
            const auto count = recv(socket_, buffer.data(), buffer.size(), 0);
            if (count <= 0) break;
            text.append(buffer.data(), static_cast<std::size_t>(count));
            if (!until.empty() && text.find(until) != text.npos) break;
        }
        return text;
    }

 private:
    int socket_;
};

std::string answerTo(unsigned short port, const std::string& text) {
    const Raw raw(port);
    raw.send(text);
    return raw.read();
}

const std::string kEnd = " HTTP/1.1\r\nHost: localhost\r\nConnection: close\r\n";

TEST(StudioProgram, StartsQuicklyAndEndsCleanly) {
    const TemporaryFile config(".mcf");
    ASSERT_EQ(run("save " + std::string(config.name()) + " --set FG_WIDTH=2048").status, 0);
    Studio studio({"--config", config.name()});
    EXPECT_THAT(studio.line, StartsWith("the studio is at http://127.0.0.1:"));
    EXPECT_LT(studio.started, std::chrono::seconds(1));
    EXPECT_EQ(run("get FG_WIDTH --at " + studio.address).output, "2048\n");

    const auto taken = run("studio --no-browser --port " + std::to_string(studio.port));
    EXPECT_EQ(taken.status, 1);
    EXPECT_THAT(joined(taken.errors), AllOf(HasSubstr("is in use"), HasSubstr("--port")));
    EXPECT_THAT(run("studio --listen nowhere").errors, HasSubstr("no address in digits"));

    // An open WebSocket, half a request, a silent connection and a running camera do not hold it up.
    const Raw half(studio.port), silent(studio.port);
    half.send("POST /api/set HTTP/1.1\r\nHost: localhost\r\nContent-Length: 100\r\n\r\n{");
    const Raw socket(studio.port);
    socket.send(
        "GET /api/live HTTP/1.1\r\nHost: localhost\r\nUpgrade: websocket\r\nConnection: Upgrade\r\n"
        "Sec-WebSocket-Key: dGhlIHNhbXBsZSBub25jZQ==\r\nSec-WebSocket-Version: 13\r\n\r\n");
    EXPECT_THAT(socket.read("\"hello\""), HasSubstr("101 Switching"));
    answerTo(studio.port, "POST /api/acquisition" + kEnd + "Content-Length: 17\r\n\r\n{\"action\": \"run\"}");
    const auto begin = Clock::now();
    EXPECT_EQ(studio.end(SIGINT), 0);
    EXPECT_LT(Clock::now() - begin, std::chrono::seconds(3));
    EXPECT_THAT(socket.read(), HasSubstr("bye"));
    const auto gone = run("get FG_WIDTH --at " + studio.address);
    EXPECT_EQ(gone.status, 1);
    EXPECT_THAT(joined(gone.errors), HasSubstr("no studio answers at 127.0.0.1"));
    EXPECT_THAT(run("get FG_WIDTH --at ftp://x/").errors, HasSubstr("no address of a studio"));
    // No address is no leave to work on a board of its own.
    for (const char* line : {"get FG_WIDTH --at ''", "--at= get FG_WIDTH"})
        EXPECT_EQ(run(line).status, 2) << line;
}

TEST(StudioProgram, CarriesTheCommandsOut) {
    const Studio studio;
    const std::string at = " --at " + studio.address;
    const TemporaryFile config(".mcf");
    const TemporaryFile picture(".png");
    EXPECT_THAT(run("set FG_WIDTH=2048" + at).output, StartsWith("FG_WIDTH = 2048 pixel  (was 1024)\n"));
    EXPECT_EQ(run("get FG_WIDTH" + at).output, "2048\n");
    EXPECT_EQ(run("save " + std::string(config.name()) + at).status, 0);
    EXPECT_THAT(config.content(), HasSubstr("FG_WIDTH=2048"));
    EXPECT_THAT(run("set FG_WIDTH=512 FG_HEIGHT=32" + at).output, HasSubstr("(was 2048)"));
    EXPECT_EQ(run("diff " + std::string(config.name()) + at).status, 1);
    EXPECT_THAT(run("grab -o " + std::string(picture.name()) + at).output, HasSubstr("512 x 32 pixels"));
    EXPECT_THAT(picture.content(), HasSubstr("IHDR"));
    EXPECT_THAT(run("load " + std::string(config.name()) + at).output, HasSubstr("512 -> 2048 pixel"));
    const auto refused = run("set FG_WIDTH=1004" + at);
    EXPECT_EQ(refused.status, 1);
    EXPECT_THAT(joined(refused.errors), HasSubstr("nearest are 1000 and 1008"));
    EXPECT_EQ(run("load /nowhere.mcf" + at).errors, "marovine: there is no file /nowhere.mcf\n");
    for (const char* own : {"demo", "studio"})
        EXPECT_THAT(joined(run(own + at).errors), HasSubstr("leave out --at")) << own;
    EXPECT_THAT(run("grab -n 1000 --view" + at).errors, HasSubstr("at most 100 pictures"));
    EXPECT_EQ(run("gte FG_WIDTH" + at).status, 2);
}

/// What takes one connection, and whatever it asks answers this.
class Impostor {
 public:
    explicit Impostor(const std::string& body) : socket_(socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0)) {
        sockaddr_in place{};
        place.sin_family = AF_INET;
        place.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        socklen_t size = sizeof place;
        bind(socket_, reinterpret_cast<const sockaddr*>(&place), size);
        listen(socket_, 1);
        getsockname(socket_, reinterpret_cast<sockaddr*>(&place), &size);
        at = " --at 127.0.0.1:" + std::to_string(ntohs(place.sin_port));
        server_ = std::thread([this, body] {
            const int peer = accept(socket_, nullptr, nullptr);
            std::array<char, 65536> asked{};
            static_cast<void>(recv(peer, asked.data(), asked.size(), 0));
            const std::string answer =
                "HTTP/1.1 200 OK\r\nConnection: close\r\nContent-Length: " + std::to_string(body.size()) +
                "\r\n\r\n" + body;
            static_cast<void>(::send(peer, answer.data(), answer.size(), MSG_NOSIGNAL));
            shutdown(peer, SHUT_WR);
            while (recv(peer, asked.data(), asked.size(), 0) > 0) continue;
            close(peer);
        });
    }
    Impostor(const Impostor&) = delete;
    Impostor& operator=(const Impostor&) = delete;
    ~Impostor() {
        shutdown(socket_, SHUT_RDWR);
        server_.join();
        close(socket_);
    }

    std::string at;

 private:
    int socket_;
    std::thread server_;
};

TEST(StudioProgram, IsNotTrustedByTheCommand) {
    const Impostor page("<html>a page</html>");
    EXPECT_THAT(joined(run("get FG_WIDTH" + page.at).errors), HasSubstr("is no studio"));
    // A file is written only where the line has asked for one.
    const TemporaryFile asked(".mcf");
    const TemporaryFile other(".mcf");
    const auto sent = [](const TemporaryFile& file) {
        return R"({"status": 0, "output": "", "errors": "", "files": [{"name": ")" +
               std::string(file.name()) + R"(", "base64": "YWJj"}]})";
    };
    const std::string save = "save " + std::string(asked.name());
    const Impostor honest(sent(asked));
    EXPECT_EQ(run(save + honest.at).status, 0);
    EXPECT_EQ(asked.content(), "abc");
    const Impostor false_(sent(other));
    EXPECT_THAT(joined(run(save + false_.at).errors), HasSubstr("not asked for"));
    EXPECT_EQ(other.content(), "");
}

TEST(StudioProgram, OutlivesBadSenders) {
    const Studio studio;
    struct Case {
        std::string sent;
        const char* answer;
    };
    const std::string large(100 * 1024, 'x');
    for (const auto& [sent, answer] : {
             Case{"GET / HTTP/1.1\r\nHost: evil.example\r\n\r\n", "403 Forbidden"},
             Case{"GET /api" + kEnd + "Origin: http://evil.example\r\n\r\n", "403 Forbidden"},
             Case{"GET /api HTTP/1.1\r\n\r\n", "403 Forbidden"},
             Case{"no request at all\r\n\r\n", "400 Bad Request"},
             Case{"GET /%00" + kEnd + "\r\n", "400 Bad Request"},
             Case{"GET /%zz" + kEnd + "\r\n", "400 Bad Request"},
             Case{"GET /%2e%2e/%2e%2e/etc/passwd" + kEnd + "\r\n", "404 Not Found"},
             Case{"GET /api" + kEnd + "X: " + large + "\r\n\r\n", "431"},
             Case{"POST /api/set" + kEnd + "Content-Length: 99999999999\r\n\r\n", "413"},
             Case{"POST /api/set" + kEnd + "Content-Length: 102400\r\n\r\n" + large, "413"},
             Case{"POST /api/set" + kEnd + "Transfer-Encoding: chunked\r\n\r\n19000\r\n" + large +
                      "\r\n0\r\n\r\n",
                  "413"},
             Case{"GET /nowhere" + kEnd + "Upgrade: websocket\r\nConnection: Upgrade\r\n\r\n", "404"},
             Case{"GET /api/live" + kEnd + "\r\n", "404"},
             Case{"HEAD /api/values?name=FG_WIDTH" + kEnd + "\r\n", "Content-Length: 2"},
             Case{"GET /api/values?name=FG%5FWIDTH" + kEnd + "\r\n", "1024"},
         }) {
        SCOPED_TRACE(sent.substr(0, 60));
        EXPECT_THAT(answerTo(studio.port, sent), HasSubstr(answer));
    }
    {
        // Gone in the middle of a request, and before its answer.
        Raw(studio.port).send("POST /api/set HTTP/1.1\r\nHost: localhost\r\nContent-Length: 100\r\n\r\n{");
        Raw(studio.port).send("GET /api/parameters/FG_WIDTH HTTP/1.1\r\nHost: localhost\r\n\r\n");
    }
    // One connection that asks too much is told so, the others are served.
    const Raw greedy(studio.port);
    std::string flood;
    for (int i = 0; i < 700; ++i) flood += "GET /icon HTTP/1.1\r\nHost: localhost\r\n\r\n";
    greedy.send(flood);
    EXPECT_THAT(greedy.read("429"), HasSubstr("Retry-After"));
    EXPECT_EQ(run("get FG_WIDTH --at " + studio.address).output, "1024\n");
}

TEST(StudioProgram, WantsATokenFromElsewhere) {
    const Studio studio({"--listen", "0.0.0.0"});
    const auto token = studio.address.substr(studio.address.find("token=") + 6);
    EXPECT_EQ(token.size(), 32U);
    EXPECT_THAT(answerTo(studio.port, "GET /api" + kEnd + "\r\n"), HasSubstr("401"));
    EXPECT_THAT(
        answerTo(studio.port, "GET /?token=" + token + kEnd + "\r\n"),
        AllOf(HasSubstr("303"), HasSubstr("Set-Cookie: marovine_studio_"), HasSubstr("Location: /\r\n")));
    EXPECT_EQ(run("get FG_WIDTH --at '" + studio.address + "'").output, "1024\n");
}

}  // namespace
