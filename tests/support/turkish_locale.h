/**
 * A real Turkish locale for the tests of names and numbers: in it I and i are no two cases of one
 * letter, and a comma stands before the decimals.
 */
#pragma once

#include <cctype>
#include <clocale>
#include <cstdlib>
#include <filesystem>
#include <string>

#include <gtest/gtest.h>

/** Makes the locale in a folder of its own, and has it in force as long as it lives. */
class TurkishLocale {
  public:
    TurkishLocale()
    {
        std::string folder = (std::filesystem::temp_directory_path() / "locale-XXXXXX").string();
        if (mkdtemp(folder.data()) == nullptr)
            std::abort();
        folder_ = folder;
        const std::string make =
            "localedef --no-archive -f UTF-8 -i tr_TR '" + folder_ + "/" + NAME + "'";
        EXPECT_EQ(std::system(make.c_str()), 0) << make;
        setenv("LOCPATH", folder_.c_str(), 1);
        EXPECT_NE(setlocale(LC_ALL, NAME), nullptr);
        EXPECT_NE(std::tolower('I'), 'i') << "the locale has not come into force";
    }

    ~TurkishLocale()
    {
        setlocale(LC_ALL, "C");
        unsetenv("LOCPATH");
        std::error_code ignored;
        std::filesystem::remove_all(folder_, ignored);
    }

    TurkishLocale(const TurkishLocale &) = delete;
    TurkishLocale &operator=(const TurkishLocale &) = delete;

  private:
    static constexpr char NAME[] = "tr_TR";

    std::string folder_;
};
