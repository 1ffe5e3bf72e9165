// The files for editors know the language.
#include <gtest/gtest.h>

#include <set>
#include <sstream>

#include "host_process.h"

namespace brenta::test {
namespace {

/// The words of the language that a file for an editor colours: those of its `keyword` groups.
std::set<std::string> KeywordsOf(const std::string& file) {
    std::set<std::string> words;
    std::istringstream lines(ReadText(file));
    for (std::string line, word; std::getline(lines, line);) {
        std::istringstream rest(line);
        if (!line.starts_with("syntax keyword") || line.find("Todo") != std::string::npos ||
            line.find("brentaHost") != std::string::npos)
            continue;
        rest >> word >> word >> word;
        while (rest >> word)
            words.insert(word);
    }
    return words;
}

TEST(EditorFiles, ColourTheWordsOfTheLanguage) {
    const std::set<std::string> words = KeywordsOf(BRENTA_EDITOR_FOLDER "/vim/syntax/brenta.vim");
    const std::string grammar = ReadText(BRENTA_EDITOR_FOLDER "/textmate/syntaxes/brenta.tmLanguage.json");
    EXPECT_EQ(words.size(), 24u);
    for (const std::string& word : words) {
        EXPECT_EQ(RunHost({"exec", "var " + word + " = 1;"}).status, 1) << word << " can be a variable";
        const bool isInGrammar = grammar.find("|" + word + "|") != std::string::npos ||
                                 grammar.find("(" + word + "|") != std::string::npos ||
                                 grammar.find("|" + word + ")") != std::string::npos ||
                                 grammar.find("(" + word + ")") != std::string::npos;
        EXPECT_TRUE(isInGrammar) << word;
    }
}

}  // namespace
}  // namespace brenta::test
