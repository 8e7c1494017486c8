/// libhaprt.so: the design runtime on the virtual board.

#include "board/machine/DesignRuntime.h"

using namespace virtualboard;

extern "C" {

fpga_design* HapLoadDesignFromBuffer(const void* image, std::size_t size, int) {
    return loadDesign(image, size);
}
fpga_design* HapLoadHapFileWithType(const char* fileName, int type, int) {
    return loadDesignFile(fileName, type);
}
void HapUnloadHapFile(fpga_design* design) {
    unloadDesign(design);
}
HapEvent* HapGetEvent(fpga_design* design, int number) {
    return designEvent(design, number);
}
int HapGetNrOfRegister(fpga_design* design) {
    return registerCount(design);
}
const char* HapGetRegisterName(fpga_design* design, int number) {
    return registerName(design, number);
}
int HapGetRegisterByName(fpga_design* design, const char* name) {
    return registerByName(design, name);
}
int HapGetRegisterBitRange(fpga_design* design, int number) {
    return registerBits(design, number);
}
int HapGetRegisterDirection(fpga_design* design, int number) {
    return registerWritable(design, number);
}

}  // extern "C"
