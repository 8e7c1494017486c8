#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cctype>
#include <string>

#include "family/TempFile.h"

namespace {

TEST(TempFile, RefusesTemplatesOfAnotherForm) {
    const struct {
        const char* nameTemplate;
        int suffixLength;
    } rows[] = {{"/tmp/coef-XXXXX.tiff", 5},
                {"/tmp/coef-XXXXXx.tiff", 5},
                {"/tmp/coef-XXXXXX.tiff", 4},
                {"XXXXX", 0},
                {"XXXXXX", 1},
                {"XXXXXX", -1}};
    for (const auto& row : rows) {
        std::string name = row.nameTemplate;
        EXPECT_EQ(marovine::mkstemps(name.data(), row.suffixLength), -1) << row.nameTemplate;
        EXPECT_EQ(name, row.nameTemplate) << "left as it was";
    }
}

TEST(TempFile, EmptiesTheTemplateWhenNoNameCanBeCreated) {
    std::string name = "/nonexistent/coef-XXXXXX";
    EXPECT_EQ(marovine::mkstemps(name.data(), 0), -1);
    EXPECT_EQ(name.front(), '\0');
}

TEST(TempFile, CreatesPrivateFilesUnderNewNames) {
    char* first = marovine::createTempFile();
    char* second = marovine::createTempFile();
    ASSERT_NE(first, nullptr);
    ASSERT_NE(second, nullptr);
    const std::string name = first;
    EXPECT_NE(name, second);
    ASSERT_EQ(name.size(), std::string("/tmp/coef-XXXXXX.tiff").size());
    EXPECT_TRUE(name.starts_with("/tmp/coef-") && name.ends_with(".tiff")) << name;
    for (char c : name.substr(10, 6)) {
        EXPECT_TRUE(std::isalnum(static_cast<unsigned char>(c))) << name;
    }
    struct stat status {};
    ASSERT_EQ(stat(first, &status), 0);
    EXPECT_EQ(status.st_mode & 0777u, 0600u);
    EXPECT_EQ(status.st_size, 0);
    marovine::deleteTempFile(first);
    marovine::deleteTempFile(second);
    marovine::deleteTempFile(nullptr);
    EXPECT_NE(access(name.c_str(), F_OK), 0);
}

}  // namespace
