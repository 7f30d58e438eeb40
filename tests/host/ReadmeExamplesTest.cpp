// The host-tool examples of the README and of the hardware guide (its dry run) do what they say:
// each one runs and every request in it is answered ok.
#include "HostTestSupport.h"

namespace ircontrol::host {
namespace {

// Words of a shell line with single quotes and a trailing "# comment", as the README writes them.
std::vector<std::string> Words(const std::string& line) {
    std::vector<std::string> words;
    std::string word;
    bool quoted = false, inWord = false;
    for (char c : line) {
        if (c == '\'') {
            quoted = !quoted;
            inWord = true;
        } else if (!quoted && c == '#' && !inWord) {
            break;
        } else if (!quoted && c == ' ') {
            if (inWord) words.push_back(word);
            word.clear();
            inWord = false;
        } else {
            word += c;
            inWord = true;
        }
    }
    if (inWord) words.push_back(word);
    return words;
}

TEST(ReadmeExamplesTest, EveryHostToolExampleIsAnsweredOk) {
    int examples = 0;
    for (const char* doc : {"/README.md", "/docs/hardware.md"}) {
        std::ifstream in(std::string(IRC_SOURCE_DIR) + doc);
        ASSERT_TRUE(in) << doc;
        for (std::string line; std::getline(in, line);) {
            const std::string tool = "build/bin/ircontrol-host ";
            const std::size_t at = line.find(tool);
            if (line.rfind("    ", 0) != 0 || at == std::string::npos) continue;
            if (line.find("/dev/lirc") != std::string::npos) continue;  // needs a real transmitter
            std::string input;
            if (line.rfind("    echo ", 0) == 0) {
                const std::vector<std::string> echo = Words(line.substr(4, line.find(" | ") - 4));
                ASSERT_EQ(echo.size(), 2u) << line;
                input = echo[1] + "\n";
            }
            const ToolRun run = RunApp(Words(line.substr(at + tool.size())), input);
            EXPECT_EQ(run.status, 0) << line << "\n" << run.out << run.err;
            ++examples;
        }
    }
    EXPECT_GE(examples, 9) << "the README or the hardware guide lost its examples";
}

}  // namespace
}  // namespace ircontrol::host
