#pragma once

/// What stands around the studio's board, as it was last told.

#include <cstdint>
#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

#include "client/Client.h"
#include "command/Json.h"
#include "marovine/Control.h"
#include "marovine/Image.h"
#include "marovine/World.h"

namespace marovine::studio {

class World {
 public:
    /// `file` is the world file that stands around the board already; empty without one.
    World(host::Applet& applet, const std::filesystem::path& file);

    host::Json json() const;
    /// Changes the members that a document has; nothing when one of them makes no sense. Throws `BadRequest`.
    void patch(const host::Json& document);
    /// Puts the world of a file's text around the board, which may name no other file. Throws `Failure` with
    /// all that is wrong with it.
    void load(std::string_view text, const std::string& name);
    /// Lays a picture on the belt.
    void setScene(const virtualboard::imaging::Image& scene, std::uint32_t fieldWidth);
    void showTestChart();
    /// Somebody else laid a picture on the belt.
    void changedElsewhere();
    /// Gives the board its belt again, after somebody else had it at another speed.
    void layBelt() { board_.setBelt(belt_); }

 private:
    struct Fault {
        std::string kind;
        std::string name;  ///< of the design parameter; empty for the n-th access
        unsigned n = 0;
        int code = 0;
    };
    struct Force {
        std::string name;
        virtualboard::Value value;
    };
    /// What a document asks for, read as a whole before anything of it is done.
    struct Wish;

    /// Takes over what a world file says of belt, camera and light.
    void adopt(const host::Json& world);
    Wish readWish(const host::Json& document) const;
    void readCamera(const host::Json& document, Wish& wish) const;
    void readLight(const host::Json& document, Wish& wish) const;
    void readBelt(const host::Json& document, Wish& wish) const;
    void readInputs(const host::Json& document, Wish& wish) const;
    Fault readFault(const host::Json& document) const;
    Force readForce(const host::Json& document) const;
    void requireDesignParameter(const std::string& name) const;
    void apply(const Fault& fault);

    host::Applet& applet_;
    virtualboard::Control& board_;
    virtualboard::imaging::Belt belt_;
    virtualboard::imaging::CameraTraits camera_;
    virtualboard::imaging::Light light_;
    std::string file_;            ///< name of the world file; empty without one
    bool cameraIsFiles_ = false;  ///< whether it says more of the camera than can be changed here
    std::string scene_ = "test chart";
    std::uint32_t sceneWidth_ = 0;
    std::uint32_t sceneHeight_ = 0;
    std::uint32_t fieldWidth_ = 0;
    std::vector<Fault> faults_;
};

}  // namespace marovine::studio
