#pragma once

/// The studio as a whole: requests go to the thread that owns the board, pictures to the pages.

#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <memory>
#include <mutex>
#include <set>
#include <string>
#include <thread>

#include "studio/Access.h"
#include "studio/Desk.h"
#include "studio/Gallery.h"
#include "studio/Http.h"
#include "studio/Routes.h"
#include "studio/Worker.h"

namespace marovine::studio {

/// The files that the studio was started with; empty where there was none.
struct GivenFiles {
    std::filesystem::path config{};
    std::filesystem::path world{};
};

class Service final : public Application {
 public:
    using Send = std::function<void(Peer, Message)>;

    /// `applet` is used by nobody else until the service ends.
    Service(host::Applet& applet, GivenFiles given, Send send);
    /// Ends the threads; requests that wait get no answer.
    ~Service() override;

    /// Tells the pages that the studio ends.
    void sayGoodbye() { tellAll("bye", host::Json::object()); }

    std::size_t largestBody(const std::string& method, const std::string& path) const override;
    void answer(Request request, Reply reply) override;
    void opened(Peer peer) override;
    void received(Peer peer, std::string message) override;
    void closed(Peer peer) override;

 private:
    using Clock = std::chrono::steady_clock;

    static Response answerElsewhere(const Request& request);
    Response carryOut(const Route& route, const Request& request);
    void tell(Peer peer, const host::Json& message);
    void tellAll(const char* type, const host::Json& message);
    void handle(Peer peer, const host::Json& message);
    void watch(std::chrono::milliseconds step);

    Send send_;
    GivenFiles given_;
    Clock::time_point start_ = Clock::now();
    std::string instance_ = newToken();  ///< tells a page that comes back whether this is the studio it knew
    mutable std::mutex mutex_;
    std::set<Peer> peers_;
    std::set<Peer> gone_;  ///< closed before they were greeted
    // Threads last: they use what stands above, each what stands above it.
    std::unique_ptr<Gallery> gallery_;
    std::unique_ptr<Desk> desk_;
    Worker pictures_;
    Worker board_;
    std::mutex watchMutex_;
    std::condition_variable watchEnds_;
    bool ending_ = false;
    std::thread watcher_;
};

}  // namespace marovine::studio
