/// What a call of the applet costs, each beside its floor in the same run.
///
///     build/release/applet_bench --benchmark_repetitions=5 --benchmark_report_aggregates_only=true

#include <dlfcn.h>
#include <pthread.h>
#include <unistd.h>

#include <array>
#include <condition_variable>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <map>
#include <mutex>
#include <random>
#include <string>
#include <thread>
#include <variant>
#include <vector>

#include "base/DynamicLoading.h"
#include "bench/Ratios.h"
#include "marovine/Control.h"
#include "marovine/marovine.h"
#include "runtime/FgGxWrapper.h"
#include "tables/DesignParameters.h"
#include "tables/SdkParameterTable.h"

namespace marovine::bench {
namespace {

using benchmark::State;

/// The applet on a board, with its defaults.
struct Fixture {
    Fixture() : device(virtualboard::insertBoard()), board(device) {
        int error = 0;
        record.instance = Std_entry(device, &error, 0);
        if (record.instance == nullptr) {
            std::fprintf(stderr, "the applet does not open: %d\n", error);
            std::exit(1);
        }
    }
    Fixture(const Fixture&) = delete;
    Fixture& operator=(const Fixture&) = delete;
    ~Fixture() {
        Fg_FreeGrabber(&record);
        virtualboard::removeBoard(device);
    }

    template <class T>
    int set(int id, T value) {
        return setIn(&record, id, value);
    }
    template <class T>
    static int setIn(Fg_Struct* record, int id, T value) {
        return Fg_setParameterWithType(record, id, &value, 0, FG_TYPE_UINT32);
    }
    int setText(int id, const std::string& text) {
        return Fg_setParameterWithType(&record, id, text.c_str(), 0, FG_TYPE_TEXT);
    }
    FgGxWrapper& instance() { return *static_cast<FgGxWrapper*>(record.instance); }

    GXdevice* device;
    virtualboard::Control board;
    Fg_Struct record{};
};

Fixture& applet() {
    static Fixture fixture;
    return fixture;
}

/// The runtime's own functions, called past the applet.
struct Direct {
    void* library = dlopen("libfglib5.so", RTLD_NOW);
    Fg_Struct* inner = applet().instance().fglibFg();
    int (*set)(Fg_Struct*, int, const void*, unsigned,
               FgParamTypes) = applet().instance().wrapperFg().get<RuntimeSlot::SetParameterWithType>();
    Fg_Struct* (*open)(const char*, GXdevice*, fpga_design*,
                       int) = resolve<decltype(open)>(library, "Fg_InitHandleSlaveAware");
    int (*close)(Fg_Struct*) = resolve<decltype(close)>(library, "Fg_FreeGrabber");
    int (*idOf)(Fg_Struct*, const char*) = resolve<decltype(idOf)>(library, "Fg_getParameterIdByName");
};

const Direct& direct() {
    static const Direct functions;
    return functions;
}

/// A recorded write, ready to be carried out again.
struct Replay {
    int id;
    FgParamTypes type;
    virtualboard::Value value;
    std::uint32_t firstIndex;

    int operator()(Fg_Struct* inner) const {
        const auto set = direct().set;
        if (const auto* field = std::get_if<std::vector<std::uint32_t>>(&value)) {
            const FieldParameterAccess block{FG_TYPE_UINT32, firstIndex,
                                             static_cast<std::uint32_t>(field->size()),
                                             const_cast<std::uint32_t*>(field->data())};
            return set(inner, id, &block, 0, type);
        }
        if (const auto* text = std::get_if<std::string>(&value))
            return set(inner, id, text->c_str(), 0, type);
        return std::visit([&](const auto& number) { return set(inner, id, &number, 0, type); }, value);
    }
};

/// What an action writes to the design of a board.
template <class Action>
std::vector<Replay> writesOf(virtualboard::Control board, Action&& action) {
    board.recordWrites(true);
    board.takeWrites();
    action();
    std::vector<Replay> replays;
    for (auto& write : board.takeWrites())
        replays.push_back({write.id, write.type, std::move(write.value), write.firstIndex});
    board.recordWrites(false);
    return replays;
}

/// The floor of a set: its design writes, carried out directly.
template <class Action>
void replayWritesOf(State& state, Action&& action) {
    const auto writes = writesOf(applet().board, action);
    for (auto _ : state)
        for (const auto& write : writes) benchmark::DoNotOptimize(write(direct().inner));
    state.counters["writes"] = static_cast<double>(writes.size());
}

// ---- typed calls ----

void FloorMutexPair(State& state) {
    pthread_mutexattr_t attributes;
    pthread_mutexattr_init(&attributes);
    pthread_mutexattr_settype(&attributes, PTHREAD_MUTEX_ERRORCHECK);
    pthread_mutex_t mutex;
    pthread_mutex_init(&mutex, &attributes);
    for (auto _ : state) {
        pthread_mutex_lock(&mutex);
        benchmark::ClobberMemory();
        pthread_mutex_unlock(&mutex);
    }
    pthread_mutex_destroy(&mutex);
    pthread_mutexattr_destroy(&attributes);
}
BENCHMARK(FloorMutexPair);

/// A design parameter that the board only stores: what a write sets going on the board is no business of the
/// applet.
void FloorRuntimeSet(State& state) {
    const int id = direct().idOf(direct().inner, "Device1_Process0_Camera_DvalMode");
    const auto set = direct().set;
    Fg_Struct* const inner = direct().inner;
    std::uint32_t value = 0;
    for (auto _ : state) {
        value ^= 1;
        benchmark::DoNotOptimize(set(inner, id, &value, 0, FG_TYPE_UINT32));
    }
}
BENCHMARK(FloorRuntimeSet);

void GetSameId(State& state) {
    Fg_Struct* const record = &applet().record;
    std::uint32_t value = 0;
    for (auto _ : state)
        benchmark::DoNotOptimize(
            Fg_getParameterWithType(record, sdkId("FG_WIDTH"), &value, 0, FG_TYPE_UINT32));
}
BENCHMARK(GetSameId);

void GetRandomIds(State& state) {
    // Parameters that the cache answers: the applied ones, less those whose read is computed or a text.
    std::vector<int> ids;
    for (const auto& row : sdkParameters) {
        const std::string_view name = row.name;
        if (row.fileUse == FileUse::Applied && row.type != ValueType::Text && !name.starts_with("FG_CCSEL") &&
            name != "FG_DIGIO_OUTPUT" && name != "FG_SHAFTENCODER_COMPENSATION_COUNT")
            ids.push_back(row.id);
    }
    std::mt19937 random(1);
    std::array<int, 4096> order{};  // of a size that costs no division to stay in
    for (auto& id : order) id = ids[random() % ids.size()];
    Fg_Struct* const record = &applet().record;
    double value = 0;
    std::size_t i = 0;
    for (auto _ : state)
        benchmark::DoNotOptimize(
            Fg_getParameterWithType(record, order[i++ % order.size()], &value, 0, FG_TYPE_UINT32));
}
BENCHMARK(GetRandomIds);

void SetOneWrite(State& state) {
    Fg_Struct* const record = &applet().record;
    std::uint32_t value = 0;
    for (auto _ : state) {
        value ^= 1;
        benchmark::DoNotOptimize(Fixture::setIn(record, sdkId("FG_USEDVAL"), value));
    }
}
BENCHMARK(SetOneWrite);

void SetRefused(State& state) {
    Fg_Struct* const record = &applet().record;
    for (auto _ : state) benchmark::DoNotOptimize(Fixture::setIn(record, sdkId("FG_LINE_DOWNSCALE"), 256u));
}
BENCHMARK(SetRefused);

/// Sets a parameter to two values in turn and leaves it at the second.
template <class T>
void alternate(State& state, int id, T first, T second) {
    bool odd = false;
    for (auto _ : state) {
        odd = !odd;
        benchmark::DoNotOptimize(applet().set(id, odd ? first : second));
    }
    applet().set(id, second);
}

void SetWidth(State& state) {
    alternate<std::uint32_t>(state, sdkId("FG_WIDTH"), 2048, 1024);
}
BENCHMARK(SetWidth);
void FloorSetWidth(State& state) {
    replayWritesOf(state, [] { applet().set(sdkId("FG_WIDTH"), 1024u); });
}
BENCHMARK(FloorSetWidth);

void SetGamma(State& state) {
    alternate<double>(state, sdkId("FG_PROCESSING_GAMMA"), 2.2, 1.0);
}
BENCHMARK(SetGamma);
void FloorSetGamma(State& state) {
    replayWritesOf(state, [] { applet().set(sdkId("FG_PROCESSING_GAMMA"), 1.0); });
}
BENCHMARK(FloorSetGamma);

/// A gamma that was not used before, as a slider gives.
void SetNewGamma(State& state) {
    double value = 1.0;
    for (auto _ : state) {
        value = value < 2.5 ? value * 1.00001 : 0.5;
        benchmark::DoNotOptimize(applet().set(sdkId("FG_PROCESSING_GAMMA"), value));
    }
    applet().set(sdkId("FG_PROCESSING_GAMMA"), 1.0);
}
BENCHMARK(SetNewGamma);

void LookupByName(State& state) {
    Fg_Struct* const record = &applet().record;
    std::vector<const char*> names;
    for (const auto& row : sdkParameters) names.push_back(row.name);
    std::size_t i = 0;
    for (auto _ : state) {
        i = (i + 37) % names.size();
        benchmark::DoNotOptimize(Fg_getParameterIdByName(record, names[i]));
    }
}
BENCHMARK(LookupByName);

// ---- opening ----

void Open(State& state) {
    direct();  // a host has the runtime loaded
    for (auto _ : state) {
        const Fixture fixture;
        benchmark::DoNotOptimize(fixture.record.instance);
    }
}
BENCHMARK(Open)->Unit(benchmark::kMicrosecond);

/// The outside work of an opening, called directly: the design, the handle, the id lookups, the writes.
void FloorOpen(State& state) {
    GXdevice* template_ = virtualboard::insertBoard();
    Fg_Struct opened{};
    const auto writes = writesOf(virtualboard::Control(template_),
                                 [&] { opened.instance = Std_entry(template_, nullptr, 0); });
    Fg_FreeGrabber(&opened);
    virtualboard::removeBoard(template_);

    void* image = nullptr;
    std::size_t size = 0;
    Info(1042, 0, 0, &size, &image);
    for (auto _ : state) {
        GXdevice* device = virtualboard::insertBoard();
        fpga_design* design = HapLoadDesignFromBuffer(image, size, 1);
        Fg_Struct* inner = direct().open("Marovine.hap", device, design, 0);
        for (const char* name : designParameterNames) benchmark::DoNotOptimize(direct().idOf(inner, name));
        for (const auto& write : writes) benchmark::DoNotOptimize(write(inner));
        direct().close(inner);
        HapUnloadHapFile(design);
        virtualboard::removeBoard(device);
    }
    state.counters["writes"] = static_cast<double>(writes.size());
}
BENCHMARK(FloorOpen)->Unit(benchmark::kMicrosecond);

// ---- files and the description ----

/// A folder of our own, removed at the end of the process.
const std::filesystem::path& folder() {
    struct Folder {
        std::filesystem::path path =
            std::filesystem::temp_directory_path() / ("marovine-bench-" + std::to_string(getpid()));
        Folder() { std::filesystem::create_directory(path); }
        Folder(const Folder&) = delete;
        Folder& operator=(const Folder&) = delete;
        ~Folder() {
            std::error_code ignored;
            std::filesystem::remove_all(path, ignored);
        }
    };
    static const Folder own;
    return own.path;
}

std::string file(const char* name) {
    return (folder() / name).string();
}

std::string contentOf(const std::string& path) {
    std::ifstream in(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(in), {}};
}

/// A saved configuration.
std::string savedConfiguration() {
    Fg_saveConfig(&applet().record, file("saved.mcf").c_str());
    return file("saved.mcf");
}

void SaveConfiguration(State& state) {
    const std::string path = file("saved.mcf");
    for (auto _ : state) benchmark::DoNotOptimize(Fg_saveConfig(&applet().record, path.c_str()));
}
BENCHMARK(SaveConfiguration)->Unit(benchmark::kMicrosecond);

void FloorSaveConfiguration(State& state) {
    const std::string content = contentOf(savedConfiguration());
    for (auto _ : state) {
        std::ofstream out(file("floor.mcf"), std::ios::binary);
        out << content;
    }
}
BENCHMARK(FloorSaveConfiguration)->Unit(benchmark::kMicrosecond);

void LoadConfiguration(State& state) {
    const std::string path = savedConfiguration();
    for (auto _ : state) benchmark::DoNotOptimize(Fg_loadConfig(&applet().record, path.c_str()));
}
BENCHMARK(LoadConfiguration)->Unit(benchmark::kMicrosecond);

/// One read of the file, and one set of every applied parameter to the value it has.
void FloorLoadConfiguration(State& state) {
    const std::string path = savedConfiguration();
    struct Known {
        int id;
        std::array<char, 512> value;
    };
    std::vector<Known> known;
    for (const auto& row : sdkParameters) {
        if (row.fileUse != FileUse::Applied) continue;
        Known& entry = known.emplace_back(Known{row.id, {}});
        Fg_getParameterWithType(&applet().record, row.id, entry.value.data(), 0, FG_TYPE_TEXT);
    }
    for (auto _ : state) {
        benchmark::DoNotOptimize(contentOf(path));
        for (const auto& [id, value] : known)
            benchmark::DoNotOptimize(
                Fg_setParameterWithType(&applet().record, id, value.data(), 0, FG_TYPE_TEXT));
    }
}
BENCHMARK(FloorLoadConfiguration)->Unit(benchmark::kMicrosecond);

void LoadLutFile(State& state) {
    const std::string path = file("saved.lut");
    applet().setText(sdkId("FG_LUT_SAVE_FILE"), path);
    applet().setText(sdkId("FG_LUT_CUSTOM_FILE"), path);
    applet().set<std::int32_t>(sdkId("FG_LUT_TYPE"), constant("LUT_TYPE_CUSTOM"));
    for (auto _ : state) benchmark::DoNotOptimize(applet().setText(sdkId("FG_LUT_CUSTOM_FILE"), path));
    applet().set<std::int32_t>(sdkId("FG_LUT_TYPE"), constant("LUT_TYPE_PROCESSING"));
}
BENCHMARK(LoadLutFile)->Unit(benchmark::kMicrosecond);

void FloorLoadLutFile(State& state) {
    const std::string path = file("saved.lut");
    applet().setText(sdkId("FG_LUT_SAVE_FILE"), path);
    for (auto _ : state) benchmark::DoNotOptimize(contentOf(path));
}
BENCHMARK(FloorLoadLutFile)->Unit(benchmark::kMicrosecond);

void DescribeAsXml(State& state) {
    std::size_t size = 0;
    Fg_getParameterInfoXML(&applet().record, 0, nullptr, &size);
    std::vector<char> buffer(size);
    for (auto _ : state)
        benchmark::DoNotOptimize(Fg_getParameterInfoXML(&applet().record, 0, buffer.data(), &size));
}
BENCHMARK(DescribeAsXml)->Unit(benchmark::kMicrosecond);

/// A parameter's node in the description tree.
RegisterInfo* nodeOf(RegisterInfo* node, int id) {
    for (; node != nullptr; node = node->next) {
        if (node->kind != FG_KIND_GROUP) {
            if (node->address == id) return node;
            continue;
        }
        for (int i = 0; i < node->value.group.childCount; ++i)
            if (RegisterInfo* found = nodeOf(node->value.group.children[i], id)) return found;
    }
    return nullptr;
}

/// The same when a limit of another length, a limit of a time and access flags have changed since the last,
/// as setters change them.
void DescribeAsXmlAnew(State& state) {
    std::size_t size = 0;
    Fg_getParameterInfoXML(&applet().record, 0, nullptr, &size);
    std::vector<char> buffer(size + 1000);
    RegisterInfo* const tree = Fg_getParameterInfo(&applet().record, 0);
    RegisterInfo* const offset = nodeOf(tree, sdkId("FG_XOFFSET"));
    RegisterInfo* const exposure = nodeOf(tree, sdkId("FG_LINEEXPOSURE"));
    RegisterInfo* const file = nodeOf(tree, sdkId("FG_LUT_CUSTOM_FILE"));
    const RegisterInfo before[] = {*offset, *exposure, *file};
    bool odd = false;
    for (auto _ : state) {
        odd = !odd;
        offset->value.uint32.maximum = odd ? 8192 : 16384;
        exposure->value.real.maximum = odd ? 200 : 1048.568;
        file->accessFlags = odd ? kAccessReadOnly : kAccessReadWrite;
        size = buffer.size();
        benchmark::DoNotOptimize(Fg_getParameterInfoXML(&applet().record, 0, buffer.data(), &size));
    }
    *offset = before[0];
    *exposure = before[1];
    *file = before[2];
}
BENCHMARK(DescribeAsXmlAnew)->Unit(benchmark::kMicrosecond);

void FloorDescribeAsXml(State& state) {
    std::size_t size = 0;
    Fg_getParameterInfoXML(&applet().record, 0, nullptr, &size);
    const std::vector<char> document(size, 'x');
    std::vector<char> buffer(size);
    for (auto _ : state) {
        std::memcpy(buffer.data(), document.data(), size);
        benchmark::ClobberMemory();
    }
}
BENCHMARK(FloorDescribeAsXml)->Unit(benchmark::kMicrosecond);

}  // namespace
}  // namespace marovine::bench

int main(int argc, char** argv) {
    // A process with one thread gets a cheaper mutex than any real host: keep a second one waiting.
    std::mutex mutex;
    std::condition_variable_any never;
    const std::jthread parked([&](const std::stop_token& stop) {
        std::unique_lock lock(mutex);
        never.wait(lock, stop, [] { return false; });
    });

    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 2;
    marovine::bench::RatioReporter reporter({
        {"GetSameId", {"FloorMutexPair"}, 1.6},
        {"GetRandomIds", {"FloorMutexPair"}, 2.2},
        {"SetOneWrite", {"FloorMutexPair", "FloorRuntimeSet"}, 1.15},
        {"SetRefused", {"FloorMutexPair"}, 30},
        {"SetWidth", {"FloorMutexPair", "FloorSetWidth"}, 2},
        {"SetGamma", {"FloorMutexPair", "FloorSetGamma"}, 3},
        {"SetNewGamma", {"FloorMutexPair", "FloorSetGamma"}, 3},
        {"LookupByName", {"FloorMutexPair"}, 2},
        {"Open", {"FloorOpen"}, 1.5},
        {"SaveConfiguration", {"FloorSaveConfiguration"}, 1.5},
        {"LoadConfiguration", {"FloorLoadConfiguration"}, 2},
        {"LoadLutFile", {"FloorLoadLutFile"}, 4},
        {"DescribeAsXml", {"FloorDescribeAsXml"}, 15},
        {"DescribeAsXmlAnew", {"FloorDescribeAsXml"}, 15},
    });
    benchmark::RunSpecifiedBenchmarks(&reporter);
    benchmark::Shutdown();
    return 0;
}
