// Runs every example of docs/requests.md through the plugin and checks that it answers and
// transmits what the reference says.
#include "CPrinter.h"
#include "HostTestSupport.h"

namespace ircontrol::host {
namespace {

struct Example {
    int line;                       // of the block's first line in the file
    std::string property, value;
    std::vector<std::string> expected;  // the "=>" lines, without "=> "
};

std::vector<Example> Examples(const std::string& path) {
    std::ifstream in(path);
    std::vector<Example> examples;
    std::string text;
    bool inside = false;
    for (int number = 1; std::getline(in, text); ++number) {
        if (!inside && text == "```example") {
            inside = true;
            examples.push_back({number + 1, "", "", {}});
        } else if (inside && text == "```") {
            inside = false;
        } else if (inside && text.rfind("=> ", 0) == 0) {
            examples.back().expected.push_back(text.substr(3));
        } else if (inside && examples.back().property.empty()) {
            const std::size_t space = text.find(' ');
            examples.back().property = text.substr(0, space);
            examples.back().value = space == std::string::npos ? "" : text.substr(space + 1);
        }
    }
    return examples;
}

// The "=>" lines for what came back, in the reference's words.
std::vector<std::string> Observed(const RequestResult& result) {
    std::vector<std::string> lines;
    lines.push_back(result.answer ? result.answer->first + " \"" + result.answer->second + "\"" : "no answer");
    for (const auto& t : result.transmissions) lines.push_back(CPrinter::Transmission(t.call));
    return lines;
}

using RequestReferenceTest = LoadedPluginTest;  // the tool's defaults, which the reference describes

TEST_F(RequestReferenceTest, EveryExampleGetsTheAnswerAndTransmissionsItShows) {
    const std::vector<Example> examples = Examples(std::string(IRC_SOURCE_DIR) + "/docs/requests.md");
    ASSERT_GE(examples.size(), 15u) << "the reference lost its examples";
    CSession session(500);
    for (const auto& example : examples) {
        Request request;
        request.kind = RequestKind::Set;
        request.property = example.property;
        request.text = example.value;
        EXPECT_EQ(Observed(session.Send(request)), example.expected) << "docs/requests.md:" << example.line;
    }
}

}  // namespace
}  // namespace ircontrol::host
