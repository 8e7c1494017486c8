/// A host runtime without any function.
extern "C" __attribute__((visibility("default"))) int Fg_unrelated() {
    return 0;
}
