/// What stands around the board: scene, camera, belt, encoder, inputs, light and world.

#include <map>
#include <utility>

#include "board/imaging/Scene.h"
#include "board/machine/Acquisition.h"

namespace virtualboard {

using imaging::SensorScene;

void Acquisition::setScene(std::shared_ptr<const imaging::Image> scene, std::uint32_t fieldWidth) {
    if (scene != nullptr) SensorScene::checkField(*scene, fieldWidth);
    changeSurroundings([&](BoardTime) {
        world_ = nullptr;
        picture_ = std::move(scene);
        fieldWidth_ = fieldWidth;
        scene_ = nullptr;
    });
}

void Acquisition::setCamera(const imaging::CameraTraits& camera) {
    imaging::checkCamera(camera);
    changeSurroundings([&](BoardTime now) {
        camera_ = camera;
        scene_ = nullptr;
        stream_.setCamera(camera, sceneRows(), now);
    });
}

void Acquisition::setBelt(const imaging::Belt& belt) {
    // In a world the light barriers begin anew with the belt, and so do the parts.
    changeSurroundings([&](BoardTime now) { stream_.setBelt(belt, world_ == nullptr, now); });
}

void Acquisition::setEncoder(const imaging::Encoder& encoder) {
    changeSurroundings([&](BoardTime now) { stream_.setEncoder(encoder, now); });
}

void Acquisition::setInput(unsigned input, std::shared_ptr<const InputLevel> level) {
    changeSurroundings([&](BoardTime now) { stream_.setInput(input, std::move(level), now); });
}

void Acquisition::wireInput(unsigned input, std::shared_ptr<const BeltPattern> pattern) {
    changeSurroundings([&](BoardTime now) { stream_.wireInput(input, std::move(pattern), now); });
}

void Acquisition::setLight(const imaging::Light& light) {
    imaging::checkLight(light);
    changeSurroundings([&](BoardTime) {
        light_ = light;
        scene_ = nullptr;
    });
}

void Acquisition::setWorld(std::shared_ptr<const world::World> world) {
    // What may be refused comes first.
    std::map<unsigned, std::shared_ptr<const InputLevel>> played;
    for (const auto& [input, signal] : world->inputs)
        played[input] = std::make_shared<PlayedLevel>(signal, clock_.now());
    changeSurroundings([&](BoardTime now) {
        stream_.setBelt(world->belt, false, now);
        stream_.setEncoder(world->encoder, now);
        for (unsigned i = 0; i < kInputs; ++i) stream_.setInput(i, nullptr, now);
        for (const auto& [input, level] : played) stream_.setInput(input, level, now);
        for (const auto& [input, barrier] : world->barriers) stream_.wireInput(input, barrier, now);
        world_ = std::move(world);
        picture_ = nullptr;
        camera_ = world_->camera;
        light_ = world_->light;
        scene_ = nullptr;
        stream_.setCamera(camera_, sceneRows(), now);
    });
}

template <typename Change>
void Acquisition::changeSurroundings(Change change) {
    const BoardTime now = clock_.now();
    settle(now);
    change(now);
    if (running_) reconfigure(now);
    work_.notify_one();
}

std::uint32_t Acquisition::sceneRows() const {
    if (scene_ != nullptr) return scene_->rows();
    return imaging::kChartSize;
}

std::shared_ptr<const SensorScene> Acquisition::makeScene() const {
    if (world_ != nullptr) {
        // A frame of the camera's own is as long as with the chart.
        return std::make_shared<const SensorScene>(world_->parts, camera_, light_, imaging::kChartSize);
    }
    if (picture_ != nullptr)
        return std::make_shared<const SensorScene>(*picture_, camera_, fieldWidth_, light_);
    return std::make_shared<const SensorScene>(imaging::testChart(), camera_, fieldWidth_, light_);
}

}  // namespace virtualboard
