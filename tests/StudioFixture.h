#pragma once

/// The studio's interface without its web server.

#include <gtest/gtest.h>

#include <chrono>
#include <condition_variable>
#include <cstddef>
#include <functional>
#include <future>
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include <nlohmann/json.hpp>

#include "client/VirtualBoard.h"
#include "studio/Service.h"

namespace marovine::studio {

using Json = nlohmann::json;

/// A studio without its web server: requests and messages go straight to what answers them.
class StudioTest : public testing::Test {
 protected:
    Response ask(const std::string& method, const std::string& target, const std::string& body = "") {
        const auto parsed = parseTarget(target);
        auto answer = std::make_shared<std::promise<Response>>();
        service.answer({method, parsed->path, parsed->query, body},
                       [answer](Response response) { answer->set_value(std::move(response)); });
        return answer->get_future().get();
    }
    Json get(const std::string& target) { return Json::parse(ask("GET", target).body); }
    Response set(const std::string& name, const Json& value, const std::string& page = "") {
        const Json setting{{"parameter", name}, {"value", value}};
        return ask("POST", "/api/set", Json{{"settings", {setting}}, {"page", page}}.dump());
    }
    Json value(const std::string& name) { return get("/api/values?name=" + name)[name]; }

    /// The messages that a page got: those of a type as soon as there are `count`, or after a while all.
    std::vector<Json> messages(Peer peer, const std::string& type, std::size_t count = 1) {
        std::vector<Json> found;
        waitFor([&] {
            found.clear();
            for (const auto& message : sent[peer])
                if (!message.binary)
                    if (Json json = Json::parse(*message.content); json["type"] == type)
                        found.push_back(json);
            return found.size() >= count;
        });
        return found;
    }
    /// The pictures that a page got, likewise.
    std::vector<std::string> frames(Peer peer, std::size_t count) {
        std::vector<std::string> found;
        waitFor([&] {
            found.clear();
            for (const auto& message : sent[peer])
                if (message.binary) found.push_back(*message.content);
            return found.size() >= count;
        });
        return found;
    }
    void waitFor(const std::function<bool()>& condition) {
        std::unique_lock lock(mutex);
        came.wait_for(lock, std::chrono::seconds(10), condition);
    }

    host::Applet applet{host::Library::load(),
                        std::make_unique<host::VirtualBoard>(),
                        {.writeDefaults = true, .rememberSteps = true}};
    std::mutex mutex;
    std::condition_variable came;
    std::map<Peer, std::vector<Message>> sent;
    Service service{applet, {}, [this](Peer peer, Message message) {
                        const std::lock_guard lock(mutex);
                        sent[peer].push_back(std::move(message));
                        came.notify_all();
                    }};
};

}  // namespace marovine::studio
