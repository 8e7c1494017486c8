#pragma once

/// The base of an applet instance: what ties it to the host runtime and what every applet of the family does
/// alike. The applet class derives from it and supplies the pure operations.

#include <cstddef>
#include <cstdint>
#include <map>
#include <memory>
#include <utility>
#include <vector>

#include "base/Fg_Error.h"
#include "base/Logger.h"
#include "description/DescriptionDocument.h"
#include "description/Fg_ParameterInfo.h"
#include "marovine/OutsideRuntimes.h"
#include "marovine/marovine.h"
#include "runtime/RuntimeFunctions.h"

class Fg_ConfigFileParser;

namespace marovine {

/// Registry nodes of one process, ordered by SDK parameter id; the nodes belong to the registry.
class RegistryMap {
 public:
    void reserve(std::size_t count) { nodes_.reserve(count); }
    void insert(int id, RegisterInfo* node) { nodes_.emplace_back(id, node); }
    /// Orders what was inserted; lookups work from then on.
    void settle();
    /// The node of an id, or null.
    RegisterInfo* find(int id) const;

 private:
    std::vector<std::pair<int, RegisterInfo*>> nodes_;
};

}  // namespace marovine

class FgGxWrapper {
    // The operations below stand in the order that the host family relies on: do not reorder.
 public:
    /// The logger of the most derived class; asked for once, then kept.
    virtual tavr::tools::logging::Logger* getDefaultLogger() const;
    /// Reads the applet's own content of an open configuration file; true on success.
    virtual bool loadConfig(Fg_ConfigFileParser& parser) = 0;
    /// Writes the applet's own content; the front-end ignores the result.
    virtual bool saveConfig(Fg_ConfigFileParser& parser) = 0;
    // Layout of the DMA channels; an applet without them throws std::runtime_error.
    virtual int processChannelToDma(int process, int channel) = 0;
    virtual int mapDmaToFormat(int dmaIndex) = 0;
    virtual int setDmaAlignment(int dmaIndex, int alignment) = 0;
    virtual int getDmaAlignment(int dmaIndex) = 0;
    virtual ~FgGxWrapper();
    /// Fills the parameter description registry.
    virtual void createUserParameters() = 0;
    // The host's calls on an instance: include/marovine/marovine.h says what each answers. The base serves
    // the configuration file, the XML description and shading; its event lookups, which an applet may
    // replace, read the design's list of events and keep no code.
    virtual int Fg_setParameterWithType(int id, const void* value, int dmaIndex, FgParamTypes type) = 0;
    virtual int Fg_getParameterWithType(int id, void* value, int dmaIndex, FgParamTypes type) = 0;
    virtual int Fg_freeParameterString(int id, void* value, int dmaIndex, FgParamTypes type) = 0;
    virtual int Fg_getParameterIdByName(const char* name) = 0;
    virtual const char* Fg_getParameterName(int index) = 0;
    virtual int Fg_getParameterId(int index) = 0;
    virtual int Fg_getParameterCount() = 0;
    virtual int Fg_saveConfig(Fg_Struct* inner, const char* fileName);
    virtual int Fg_loadConfig(Fg_Struct* inner, const char* fileName);
    virtual int Fg_getParameterInfoXML(Fg_Struct* record, int port, char* buffer, std::size_t* size);
    virtual ShadingMaster* Fg_AllocShading(int set, int port);
    virtual int Fg_FreeShading(ShadingMaster* shading);
    virtual int Shad_SetSubValueLine(ShadingMaster* shading, int x, int channel, float value);
    virtual int Shad_SetMultValueLine(ShadingMaster* shading, int x, int channel, float value);
    virtual int Shad_SetFixedPatternNoiseLine(ShadingMaster* shading, int on, int x, int channel);
    virtual int Shad_GetMaxLine(ShadingMaster* shading);
    virtual int Shad_GetAccess(ShadingMaster* shading);
    virtual int Shad_FreeAccess(ShadingMaster* shading);
    virtual int Shad_WriteActLine(ShadingMaster* shading, int line);
    virtual std::uint64_t Fg_getEventMask(const char* name);
    virtual const char* Fg_getEventName(unsigned long mask);
    // Who the applet is. The configuration file names all four, and a load accepts its own type only; the
    // type is also the model of the XML description. Texts live as long as the library.
    virtual const char* getManufacturer() = 0;
    virtual const char* getCameraType() = 0;
    virtual const char* getCameraVersion() = 0;
    virtual int getAppletID() = 0;

    explicit FgGxWrapper(int processCount);
    FgGxWrapper(const FgGxWrapper&) = delete;
    FgGxWrapper& operator=(const FgGxWrapper&) = delete;

    // ---- opening ----

    /// Opens the host runtime library by name and fills the function table; 0, or -2031 when it cannot be
    /// opened.
    int initializeDllFunctions(const char* fileName);
    /// Opens the inner handle on a design. 0; -2031 when the runtime has no function for it; else the
    /// runtime's last error number, or -100 when it reports none.
    int runFgInit(const char* hapName, GXdevice* device, fpga_design* design, int flags);
    /// Keeps both handles; from now on the design is unloaded with the instance.
    void initHandles(GXdevice* device, fpga_design* design);

    /// The board and the design of the most recently opened instance of the process: a non-null argument is
    /// stored, a null one asks. The last opening wins; a handle stays after its instance has ended. Usable
    /// from any thread.
    static GXdevice* accessDeviceHandle(GXdevice* device);
    static fpga_design* accessDesignHandle(fpga_design* design);

    // ---- what others read ----

    const marovine::RuntimeFunctions& wrapperFg() const { return private_->functions; }
    Fg_Struct* fglibFg() const { return private_->innerHandle; }
    GXdevice* boardHandle() const { return private_->board; }
    fpga_design* designHandle() const { return private_->design; }
    Fg_Error& fgError() { return private_->error; }
    Fg_ParameterInfo& parameterInfo() { return *private_->registry; }

    // ---- error state ----

    /// Stores a code as the instance's last error and returns it.
    int setError(int code) { return private_->error.setErr(code); }
    int Fg_getLastErrorNumber() const { return private_->error.getErrorNumberBuffer(); }
    /// The runtime's own last error number; -12 when it cannot be asked.
    int Fg_getLastErrorNumberGx() const;

    /// First node of the description tree of a port; null when the port has none.
    RegisterInfo* Fg_getParameterInfo(int port) { return parameterInfo().getRegisterInfo(port); }

    // ---- the design, as the caller gives it ----

    /// All of these pass the inner handle first and return the runtime's result; -12 without the function.
    int setUnwrappedParameterWithType(int id, const void* value, int dmaIndex, FgParamTypes type);
    int getUnwrappedParameterWithType(int id, void* value, int dmaIndex, FgParamTypes type) const;
    int freeUnwrappedParameterString(int id, void* value, int dmaIndex, FgParamTypes type);
    int setUnwrappedParameter(int id, const void* value, int dmaIndex);
    int getUnwrappedParameter(int id, void* value, int dmaIndex);
    /// Root of the runtime's own parameter tree, or null.
    RegisterInfo* getUnwrappedParameterInfo() const;
    /// The runtime's id of a design parameter; 0 or less when the name is unknown.
    int getParameterIdByName(const char* name) const;

    // ---- field caches: copies between a cache array and a record; a null record does nothing ----

    /// Bytes of one element, 0 for type codes that no field has.
    static std::size_t elementSize(std::int32_t type);
    static void setFieldCache(void* cache, const FieldParameterInt_s* record);
    static void getFieldCache(const void* cache, FieldParameterInt_s* record);
    static void setFieldCache(void* cache, const FieldParameterDouble_s* record);
    static void getFieldCache(const void* cache, FieldParameterDouble_s* record);
    static void setFieldCache(void* cache, const FieldParameterAccess* record);
    static void getFieldCache(const void* cache, FieldParameterAccess* record);

    // ---- temporary files, for applets that need them ----

    /// Creates an empty file under /tmp; a text to give back with `deleteTempFile`, or null.
    static char* createTempFile();
    static void deleteTempFile(char* name);

    /// Whether the design's registers are offered as pseudo-parameters.
    bool directRegisterAccess = false;

 protected:
    /// The registry node of a parameter, or null.
    RegisterInfo* findRegisterInfo(int process, int id) const;

    /// Process number to the nodes of its parameters; the nodes belong to the registry.
    std::map<int, marovine::RegistryMap> registryMaps_;

 private:
    struct Private {
        marovine::RuntimeFunctions functions;
        Fg_Struct* innerHandle = nullptr;
        GXdevice* board = nullptr;
        fpga_design* design = nullptr;
        void* runtimeLibrary = nullptr;
        Fg_Struct* (*initHandleSlaveAware)(const char*, GXdevice*, fpga_design*, int) = nullptr;
        Fg_Struct* (*initHandle)(const char*, GXdevice*, fpga_design*) = nullptr;
        int (*parameterIdByName)(Fg_Struct*, const char*) = nullptr;
        int (*lastErrorNumber)(Fg_Struct*) = nullptr;
        std::unique_ptr<Fg_ParameterInfo> registry;
        marovine::DescriptionDocument description;
        Fg_Error error;
    };

    mutable tavr::tools::logging::Logger* logger_ = nullptr;
    std::unique_ptr<Private> private_;
};
