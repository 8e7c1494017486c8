#pragma once

/// Temporary files for picture coefficients.

namespace marovine {

/// Creates and opens a file from a template such as "/tmp/coef-XXXXXX.tiff": the six X, which must stand just
/// before the suffix, are replaced by a name not taken yet. Returns the descriptor (mode 0600, read and
/// write), or -1 for a template of another form, and -1 with an emptied template when no name could be
/// created.
int mkstemps(char* nameTemplate, int suffixLength);

/// Creates an empty temporary file and returns its path, to be given to `deleteTempFile`; null on failure.
char* createTempFile();
/// Removes the file and frees its path; null is ignored.
void deleteTempFile(char* name);

}  // namespace marovine
