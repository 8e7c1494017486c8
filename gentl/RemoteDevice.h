#pragma once

/// The camera with its applet, as a consumer configures it.

#include <atomic>
#include <map>
#include <span>
#include <string_view>
#include <vector>

#include "client/Client.h"
#include "client/VirtualBoard.h"
#include "gentl/Module.h"

namespace marovine::gentl {

class Stream;

/// The applet's parameters behind registers. Thread-safe: sets come one after the other.
class RemoteDevice final : public Module {
 public:
    /// Opens the applet on a board of its own, in the world of a file where one is given. Throws IO when it
    /// cannot be opened or the file is no world.
    RemoteDevice(std::string id, std::string serialNumber, const std::string& worldFile, bool readOnly);

    host::Applet& applet() { return applet_; }
    void close() override;
    virtualboard::Control& board() { return host::boardOf(applet_); }
    void setStream(std::weak_ptr<Stream> stream);

    std::int64_t integer(std::string_view name) const;
    double real(std::string_view name) const;
    /// Sets a parameter. A refusal throws INVALID_VALUE with rule, cause and nearest value; ACCESS_DENIED
    /// where the parameter cannot be set now.
    void set(std::string_view name, const host::Value& value);
    void setInteger(std::string_view name, std::int64_t value);
    void setElements(std::string_view name, std::uint32_t first, const host::Field& elements);

    /// Bytes of the largest picture that the applet is set to.
    std::size_t payloadSize() const;
    /// The part of the sensor's picture that is taken.
    struct Window {
        std::uint32_t xOffset, yOffset, height;
    };
    /// The window after the last set, without a call of the applet: a thread of the board may ask.
    Window window() const;
    /// Pictures that are still to come since AcquisitionStart; GENTL_INFINITE without limit.
    std::uint64_t picturesLeft() const { return picturesLeft_; }
    /// A picture came; the acquisition ends with the last one that its mode asks for. A thread of the board
    /// may tell.
    void pictureTaken();
    /// Whether AcquisitionStart was executed and the acquisition has not ended.
    bool acquiring() const { return picturesLeft_ > 0; }
    /// Whether the consumer streams: what decides how large a picture is cannot change.
    bool locked() const { return tlParamsLocked_ != 0; }
    /// Writes TLParamsLocked, 0 or 1.
    void setStreaming(std::int64_t locked);

    /// The features of the board itself, which no real device has: its clock and what drives its inputs.
    void describeBoard(NodeMap& nodes);

 private:
    void describe(NodeMap& nodes) override;
    bool mayWrite() const override { return !readOnly_; }
    bool fires(EVENT_TYPE type) const override {
        return type == EVENT_REMOTE_DEVICE || type == EVENT_FEATURE_INVALIDATE;
    }

    // ---- the applet's own parameters ----
    void describeApplet(NodeMap& nodes);
    void describeParameter(NodeMap& nodes, const host::Parameter& parameter);
    bool isLocked(const std::string& name) const;
    /// Why a parameter cannot be set now.
    std::string whyLocked(const std::string& name);
    /// The features that move or lock this parameter.
    std::vector<std::string> moversOf(const std::string& name);

    // ---- the standard features ----
    void describeDevice(NodeMap& nodes);
    void describePicture(NodeMap& nodes);
    void describeAcquisition(NodeMap& nodes);
    void describeTriggers(NodeMap& nodes);
    void describeColour(NodeMap& nodes);
    void describeEvents(NodeMap& nodes);
    void notify(std::uint64_t mask);
    void tell(const virtualboard::Event& event);
    std::shared_ptr<Stream> stream();
    void start();
    void stop();

    /// Where parameters stand before a set, to see what it moved.
    std::vector<host::Applet::Standing> standings() const;
    void tellWhatMoved(const std::vector<host::Applet::Standing>& before);
    void rememberWindow();
    /// Tells consumers that features are to be looked at again.
    void tellMoved(std::span<const std::string_view> names);
    /// How many pictures are left from now on, 0: none flow.
    void setPicturesLeft(std::uint64_t pictures);
    std::uint64_t picturesOfMode() const;
    [[noreturn]] void refuse(std::string_view name, const host::Value& value, int code);

    const std::string serialNumber_;
    const bool readOnly_;
    mutable host::Applet applet_;
    std::map<std::string, std::vector<std::string>, std::less<>> standardNames_;  ///< by parameter
    std::mutex setting_;
    mutable std::mutex windowing_;
    Window window_{};
    std::mutex streaming_;
    std::weak_ptr<Stream> stream_;
    std::atomic<std::uint64_t> picturesLeft_ = 0;
    std::atomic<std::int64_t> tlParamsLocked_ = 0;

    /// The entries of AcquisitionMode, and the most that AcquisitionFrameCount takes.
    enum : std::int64_t { kContinuous = 0, kSingleFrame = 1, kMultiFrame = 2 };
    static constexpr std::int64_t kMostFrames = 1 << 30;

    // Events: the masks of all, by number, and those that are told.
    std::vector<std::uint64_t> eventMasks_;
    std::atomic<std::uint64_t> notified_ = 0;
    std::mutex listening_;

    // What selectors and modes are set to.
    std::atomic<std::int64_t> acquisitionMode_ = 0;
    std::atomic<std::int64_t> frameCount_ = 1;
    std::atomic<std::int64_t> triggerSelector_ = 0;
    std::atomic<std::int64_t> balanceSelector_ = 0;
    std::atomic<std::int64_t> tableSelector_ = 0;
    std::atomic<std::int64_t> tableIndex_ = 0;
    std::atomic<std::int64_t> clockMode_ = 0;
    std::atomic<std::int64_t> inputSelector_ = 0;
    std::atomic<std::int64_t> eventSelector_ = 0;

    virtualboard::EventSubscription subscription_;  ///< ends first: its thread calls this object
};

}  // namespace marovine::gentl
