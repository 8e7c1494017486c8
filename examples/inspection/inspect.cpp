// A host that inspects bottles: a light barrier triggers a picture of each, an encoder its lines, and each is
// compared with the first one, which is good. What it finds is held against the truth about the world.
//
//     c++ -std=c++20 inspect.cpp -o inspect $(pkg-config --cflags --libs marovine) -ldl
//     ./inspect $(pkg-config --variable=applet marovine) bottles.json
#include <dlfcn.h>
#include <marovine/Control.h>
#include <marovine/FrameMemory.h>
#include <marovine/marovine.h>
#include <marovine/marovine_constants.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

namespace {

constexpr int kWidth = 320, kHeight = 440;  // pixels and rows of a picture
constexpr std::size_t kBytes = std::size_t{kWidth} * kHeight * 3;
constexpr int kPictures = 61;   // the first one shows the good bottle
constexpr int kBottle = 160;    // pixels across
constexpr int kBelt = 157;      // of blocks that are belt, red, green and blue added up
constexpr int kBlock = 4;       // pixels and rows of a block, whose mean is compared
constexpr int kTolerance = 45;  // of that mean, the three colours added up

/// The applet's exports, called by name.
struct Applet {
    explicit Applet(const char* file) : library(dlopen(file, RTLD_NOW)) {
        if (library == nullptr) throw std::runtime_error(dlerror());
    }
    template <class Result, class... Arguments>
    Result call(const char* name, Arguments... arguments) const {
        return reinterpret_cast<Result (*)(Arguments...)>(dlsym(library, name))(arguments...);
    }
    void set(Fg_Struct* record, const char* name, std::uint32_t value) const {
        const int id = call<int>("Fg_getParameterIdByName", record, name);
        const void* address = &value;
        if (call<int>("Fg_setParameterWithType", record, id, address, 0, FG_TYPE_UINT32) != 0)
            throw std::runtime_error(std::string(name) + " is refused");
    }
    void* library;
};

/// A block of a picture that is not as it should be.
struct Finding {
    unsigned x, y;
    bool isIn(const virtualboard::TruthBox& box) const {
        return x - box.left + kBlock < box.width + kBlock && y - box.top + kBlock < box.height + kBlock;
    }
};

/// The picture of one bottle.
class Bottle {
 public:
    explicit Bottle(const FrameMemoryPicture& picture) : pixels_(picture.pixels, picture.pixels + kBytes) {
        // Its edge, on a row through the label.
        while (left_ + kBottle + kBlock < kWidth && mean(0, 300) < kBelt) ++left_;
    }

    std::vector<Finding> differences(const Bottle& good) const {
        std::vector<Finding> found;
        for (int y = kBlock; y + 2 * kBlock < kHeight; y += kBlock)
            for (int x = kBlock; x + kBlock < kBottle; x += kBlock)
                if (differs(good, x, y)) found.push_back({unsigned(left_ + x), unsigned(y)});
        return found;
    }

 private:
    /// A pixel more or less counts nothing: neither the trigger nor the edge is more exact.
    bool differs(const Bottle& good, int x, int y) const {
        int least = kTolerance + 1;
        for (int i = 0; i < 9; ++i)
            least = std::min(least, std::abs(mean(x, y) - good.mean(x + i % 3 - 1, y + i / 3 - 1)));
        return least > kTolerance;
    }
    int mean(int x, int y) const {
        int sum = 0;
        for (int i = 0; i < kBlock * kBlock; ++i) sum += colours(left_ + x + i % kBlock, y + i / kBlock);
        return sum / (kBlock * kBlock);
    }
    int colours(int x, int y) const {
        const std::uint8_t* pixel = &pixels_[static_cast<std::size_t>(y * kWidth + x) * 3];
        return pixel[0] + pixel[1] + pixel[2];
    }

    std::vector<std::uint8_t> pixels_;
    int left_ = 0;
};

void inspect(const Applet& applet, virtualboard::Control board, Fg_Struct* record) {
    for (const auto& [name, value] :
         {std::pair<const char*, unsigned>{"FG_WIDTH", kWidth},
          {"FG_HEIGHT", kHeight},
          {"FG_LINETRIGGERMODE", ASYNC_TRIGGER},
          {"FG_LINETRIGGERINSRC", TRGINSRC_GPI_0},
          {"FG_IMGTRIGGERMODE", ASYNC_TRIGGER},
          {"FG_IMGTRIGGERINSRC", TRGINSRC_GPI_4},
          {"FG_IMGTRIGGERGATEDELAY", 64}})  // lines from the barrier to the camera
        applet.set(record, name, value);
    const virtualboard::FrameMemory memory(4, kBytes);
    dma_mem* const ring = memory.get();
    applet.call<int>("Fg_AcquireEx", record, 0u, std::int64_t{kPictures}, 0, ring);
    std::optional<Bottle> good;
    int hits = 0, misses = 0, passed = 0, rejected = 0;
    for (std::int64_t number = 1; number <= kPictures; ++number) {
        if (applet.call<std::int64_t>("Fg_getLastPicNumberBlockingEx", record, number, 0u, 60, ring) < number)
            throw std::runtime_error("a picture did not come");
        const Bottle bottle(memory.picture(number));
        if (!good) good = bottle;
        const auto found = bottle.differences(*good);
        const int before = hits + misses;
        for (const auto& part : board.pictureTruth(ring, number).parts) {
            for (const auto& defect : part.defects) {
                const bool hit = std::ranges::any_of(found, [&](Finding f) { return f.isIn(defect.box); });
                std::printf("bottle %2d: %-12s of severity %.2f %s\n", int(part.number), defect.kind.c_str(),
                            defect.severity, hit ? "found" : "missed");
                ++(hit ? hits : misses);
            }
        }
        if (hits + misses == before) ++(found.empty() ? passed : rejected);
    }
    std::printf("defects: %d found, %d missed; ", hits, misses);
    std::printf("bottles without: %d passed, %d rejected\n", passed, rejected);
}

}  // namespace

int main(int count, char** arguments) try {
    if (count != 3) throw std::runtime_error("usage: inspect libMarovine.so WORLD.json");
    const Applet applet(arguments[1]);
    GXdevice* device = virtualboard::insertBoard();
    int code = 0;
    Fg_Struct record{applet.call<void*>("Std_entry", device, &code, 0)};
    if (record.instance == nullptr) throw std::runtime_error("the applet does not open");
    virtualboard::Control board(device);
    board.setClockMode(virtualboard::ClockMode::AsFastAsPossible);
    board.loadWorld(arguments[2]);
    inspect(applet, board, &record);
    applet.call<int>("Fg_FreeGrabber", &record);
    virtualboard::removeBoard(device);
} catch (const std::exception& error) {
    std::fprintf(stderr, "%s\n", error.what());
    return 1;
}
