#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <sys/wait.h>

#include <nlohmann/json.hpp>

namespace {

struct RunResult {
    int status = -1;
    std::string out;
};

// Runs the built `lumo` through the shell, with optional standard input, and captures stdout.
RunResult runLumo(const std::string& arguments, const std::string& input = "", bool mergeStderr = false) {
    namespace fs = std::filesystem;
    fs::path inputFile = fs::temp_directory_path() / ("lumo-cli-input-" + std::to_string(::getpid()));
    std::ofstream(inputFile, std::ios::binary) << input;
    std::string command = std::string("'") + LUMO_EXECUTABLE + "' " + arguments + " < '" +
                          inputFile.string() + "'" + (mergeStderr ? " 2>&1" : " 2>/dev/null");
    RunResult result;
    FILE* pipe = ::popen(command.c_str(), "r");
    if (!pipe)
        return result;
    std::array<char, 4096> buffer;
    while (std::size_t n = std::fread(buffer.data(), 1, buffer.size(), pipe))
        result.out.append(buffer.data(), n);
    int status = ::pclose(pipe);
    result.status = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    fs::remove(inputFile);
    return result;
}

std::vector<nlohmann::json> jsonLines(const std::string& out) {
    std::vector<nlohmann::json> lines;
    std::size_t start = 0;
    while (start < out.size()) {
        auto end = out.find('\n', start);
        lines.push_back(nlohmann::json::parse(out.substr(start, end - start)));
        start = end == std::string::npos ? out.size() : end + 1;
    }
    return lines;
}

// A temporary folder of input files, removed afterwards.
class CliFiles : public ::testing::Test {
protected:
    std::filesystem::path dir = std::filesystem::temp_directory_path() /
                                ("lumo-cli-" + std::to_string(::getpid()) + "-" +
                                 ::testing::UnitTest::GetInstance()->current_test_info()->name());
    void SetUp() override { std::filesystem::create_directories(dir); }
    void TearDown() override { std::filesystem::remove_all(dir); }
    std::string write(const std::string& name, const std::string& contents) {
        auto path = dir / name;
        std::ofstream(path, std::ios::binary) << contents;
        return "'" + path.string() + "'";
    }
};

} // namespace

TEST(Cli, ExitStatuses) {
    struct Case {
        std::string arguments;
        int status;
    };
    const Case cases[] = {
        {"--help", 0},
        {"--bogus", 2},
        {"--lang klingon", 2},
        {"--digits many", 2},
        {"--digits", 2},
        {"--format yaml", 2},
        {"--format", 2},
        {"--sample somefile.txt", 2},
        {"/nonexistent/sheet.txt", 1},
        {"--sample", 0},
        {"--starter", 0},
        {"--sheet NoSuchSheet -", 2},
        {"-", 0},
    };
    for (const auto& c : cases)
        EXPECT_EQ(runLumo(c.arguments, "1 + 1\n").status, c.status) << c.arguments;
}

TEST(Cli, UsageErrorPrintsTheUsage) {
    auto result = runLumo("--bogus", "", true);
    EXPECT_NE(result.out.find("unknown option --bogus"), std::string::npos);
    EXPECT_NE(result.out.find("usage: lumo"), std::string::npos);
}

// A text file's final line feed ends its last line; only a further one adds a blank line.
TEST_F(CliFiles, FinalLineFeedEndsTheLastLine) {
    struct Case {
        std::string text;
        std::size_t rows;
    };
    const Case cases[] = {
        {"1\n2\n", 2}, {"1\n2", 2}, {"1\n2\n\n", 3}, {"\n", 1}, {"1\r\n", 1},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(jsonLines(runLumo("--json", c.text).out).size(), c.rows) << "stdin: " << c.text;
        EXPECT_EQ(jsonLines(runLumo("--json " + write("sheet.txt", c.text)).out).size(), c.rows)
            << "file: " << c.text;
    }
    // A document's sheet keeps the editor's empty last line.
    auto document = write("doc.json", R"({"sheets": [{"id": "11111111-1111-1111-1111-111111111111",
        "name": "A", "text": "1\n2\n"}]})");
    EXPECT_EQ(jsonLines(runLumo("--json " + document).out).size(), 3u);
}

TEST_F(CliFiles, UnknownSheetListsTheSheets) {
    auto result =
        runLumo("--sheet Nope " + write("Alpha.txt", "1\n") + " " + write("Beta Two.txt", "2\n"), "", true);
    EXPECT_EQ(result.status, 2);
    EXPECT_EQ(result.out, "lumo: no sheet named 'Nope'; the sheets are:\n  Alpha\n  Beta Two\n");
}

// The recordings cover every kind of line but a failure, and name their sheets.
TEST(Cli, JsonLinesFromStandardInput) {
    auto lines = jsonLines(runLumo("--json --lang en", "1\n1 +\n").out);
    ASSERT_EQ(lines.size(), 2u);
    EXPECT_EQ(lines[0]["sheet"], "stdin");
    EXPECT_EQ(lines[1]["kind"], "failure");
    EXPECT_EQ(lines[1]["message"], "The expression ends in the middle");
}

// Texts that need escaping come out as the JSON library itself writes them, invalid UTF-8
// replaced: each line is its own canonical form, and the text survives the round trip.
TEST(Cli, JsonStringsAreEscapedAsTheLibraryWritesThem) {
    const struct {
        std::string line;
        std::string answer;
    } cases[] = {
        {R"("say \"hi\"")", R"("say "hi"")"},
        {R"("a\\b")", R"("a\b")"},
        {R"("tab\there")", "\"tab\there\""},
        {R"("two\nlines")", "\"two\nlines\""},
        {"\"bell\x07 del\x7f\"", "\"bell\x07 del\x7f\""},
        {"\"漢字 é\"", "\"漢字 é\""},
        {"\"bad \xff\xfe byte\"", "\"bad \uFFFD\uFFFD byte\""},
    };
    for (const auto& c : cases) {
        const auto result = runLumo("--json --lang en", c.line + "\n");
        ASSERT_EQ(result.status, 0) << c.line;
        const std::string out = result.out.substr(0, result.out.find('\n'));
        const auto json = nlohmann::ordered_json::parse(out);
        EXPECT_EQ(json.dump(), out) << c.line;
        EXPECT_EQ(json["answer"], c.answer) << c.line;
    }
}

// The plain number reads back as the very double the answer holds, beyond the digits shown.
TEST(Cli, JsonNumbersAreExact) {
    auto lines = jsonLines(runLumo("--json --lang en", "0.1 + 0.2\n(2^70) m\n12.5%\n").out);
    ASSERT_EQ(lines.size(), 3u);
    EXPECT_EQ(lines[0]["answer"], "0.3");
    EXPECT_EQ(lines[0]["number"].get<double>(), 0.1 + 0.2);
    EXPECT_EQ(lines[1]["number"].get<double>(), std::pow(2.0, 70));
    EXPECT_EQ(lines[1]["unit"], "m");
    EXPECT_EQ(lines[2]["number"].get<double>(), 12.5);
    EXPECT_EQ(lines[2]["unit"], "%");
}

TEST(Cli, FormattingOptions) {
    struct Case {
        std::string arguments;
        std::string line;
        std::string answer;
    };
    const Case cases[] = {
        {"", "1234567.5", "1,234,567.5"},
        {"--no-grouping", "1234567.5", "1234567.5"},
        {"--digits 2", "1 / 3", "0.33"},
        {"--angle degrees", "sin(30)", "0.5"},
        {"--angle=degrees", "sin(30)", "0.5"},
        {"--lang ja", "1 / 0", "0 で割ることはできません"},
        {"--lang english", "1 / 0", "Cannot divide by zero"},
    };
    for (const auto& c : cases) {
        auto result = runLumo("--json " + c.arguments, c.line + "\n");
        ASSERT_EQ(result.status, 0) << c.arguments;
        auto first = jsonLines(result.out).at(0);
        auto shown = first.contains("answer") ? first["answer"] : first["message"];
        EXPECT_EQ(shown, c.answer) << c.arguments << " " << c.line;
    }
}

TEST_F(CliFiles, SeveralFilesFormOneDocument) {
    auto library = write("Library.txt", "def double(v):\n    return v × 2\n");
    auto main = write("Main.txt", "double(21)\n");
    auto result = runLumo("--json " + library + " " + main);
    ASSERT_EQ(result.status, 0);
    auto lines = jsonLines(result.out);
    ASSERT_EQ(lines.size(), 3u);
    EXPECT_EQ(lines[0]["sheet"], "Library");
    EXPECT_EQ(lines[2]["sheet"], "Main");
    EXPECT_EQ(lines[2]["answer"], "42");

    auto onlyMain = jsonLines(runLumo("--json --sheet Main " + library + " " + main).out);
    ASSERT_EQ(onlyMain.size(), 1u);
    EXPECT_EQ(onlyMain[0]["answer"], "42");
}

TEST_F(CliFiles, Documents) {
    auto document = write("doc.json", R"({"sheets": [
        {"id": "11111111-1111-1111-1111-111111111111", "name": "A", "text": "a = 2\na × 3"},
        {"id": "22222222-2222-2222-2222-222222222222", "name": "B", "text": "5 km in m"}]})");
    auto lines = jsonLines(runLumo("--json " + document).out);
    ASSERT_EQ(lines.size(), 3u);
    EXPECT_EQ(lines[1]["answer"], "6");
    EXPECT_EQ(lines[2]["sheet"], "B");
    EXPECT_EQ(lines[2]["answer"], "5,000 m");

    for (const std::string broken : {"", "{", "[]", R"({"sheets": 3})", "not json"}) {
        auto result = runLumo(write("broken.json", broken), "", true);
        EXPECT_EQ(result.status, 1) << broken;
        EXPECT_NE(result.out.find("broken.json"), std::string::npos) << result.out;
    }
}

TEST_F(CliFiles, TextOutputHeadingsAndFailures) {
    auto first = write("First.txt", "1 +\n");
    auto second = write("Second.txt", "2\n");
    struct Case {
        std::string arguments;
        bool headings;
    };
    const Case cases[] = {
        {first + " " + second, true}, {first, false}, {"--sheet First " + first + " " + second, false}};
    for (const auto& c : cases) {
        auto out = runLumo("--lang en " + c.arguments).out;
        EXPECT_EQ(out.find("First") != std::string::npos, c.headings) << c.arguments << "\n" << out;
        // Off a terminal the failure is marked without colour codes.
        EXPECT_NE(out.find("! The expression ends in the middle"), std::string::npos) << out;
        EXPECT_EQ(out.find('\x1b'), std::string::npos) << out;
    }
}

// The built-in documents' full output, recorded once; any change in an answer, a message, the
// layout or the JSON shows up here byte for byte. Regenerate a file only for a deliberate change.
TEST(Cli, BuiltinDocumentsMatchTheirRecordings) {
    struct Case {
        std::string arguments;
        std::string recording;
    };
    const Case cases[] = {
        {"--sample --lang ja", "sample-ja.txt"},
        {"--sample --lang en", "sample-en.txt"},
        {"--sample --lang ja --json", "sample-ja.jsonl"},
        {"--sample --lang en --json", "sample-en.jsonl"},
        {"--starter --lang ja", "starter-ja.txt"},
        {"--starter --lang en", "starter-en.txt"},
        {"--starter --lang ja --json", "starter-ja.jsonl"},
        {"--starter --lang en --json", "starter-en.jsonl"},
        {"--starter --lang en --angle degrees --digits 3 --no-grouping", "starter-en-degrees-3.txt"},
        {"--sample --lang ja --format markdown", "sample-ja.md"},
        {"--sample --lang en --format markdown", "sample-en.md"},
        {"--sample --lang ja --format csv", "sample-ja.csv"},
        {"--sample --lang en --format csv", "sample-en.csv"},
        {"--sample --lang en --format text", "sample-en.txt"},
        {"--sample --lang en --format json", "sample-en.jsonl"},
    };
    for (const auto& c : cases) {
        std::ifstream file(std::filesystem::path(LUMO_TEST_DATA_DIR) / "cli" / c.recording, std::ios::binary);
        ASSERT_TRUE(file) << c.recording;
        const std::string expected((std::istreambuf_iterator<char>(file)), std::istreambuf_iterator<char>());
        const RunResult result = runLumo(c.arguments);
        EXPECT_EQ(result.status, 0) << c.arguments;
        EXPECT_EQ(result.out, expected) << c.arguments;
    }
}
