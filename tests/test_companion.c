/* A library that does nothing but be loaded, and can be unloaded. */
extern const int companion;
__attribute__((visibility("default"))) const int companion = 1;
