#include <tests/support/test.h>

using tam::Tam_path;

namespace {

// A path that holds the text as it is, not simplified, and lets the tests at the protected operations.
class Open_path : public Tam_path {
public:
    explicit Open_path(const std::wstring& text) { *static_cast<Tam_path*>(this) = text; }

    using Tam_path::absolute_levels;
    using Tam_path::find_directory;
    using Tam_path::find_extension_separator;
    using Tam_path::find_filename;
    using Tam_path::find_level;
    using Tam_path::init_separators;
    using Tam_path::level;
    using Tam_path::make_unc;
    using Tam_path::validate_drive_letter;
};

Open_path raw(const std::wstring& text)
{
    return Open_path(text);
}

// What an operation throws, as "range: text", or nothing.
template <class Operation>
std::string thrown_by(Operation operation)
{
    try {
        operation();
    } catch (const Tam_path::No_unc& e) {
        return std::string("no_unc: ") + e.what();
    } catch (const std::invalid_argument& e) {
        return std::string("invalid: ") + e.what();
    } catch (const std::range_error& e) {
        return std::string("range: ") + e.what();
    } catch (const std::exception& e) {
        return std::string("other: ") + e.what();
    }
    return "";
}

const std::string NO_LEVEL = "range: level index out of range.";
const std::string NO_UNC = "no_unc: Path does not have a UNC.";
const std::string BAD_DRIVE = "invalid: Invalid drive letter.";
const std::string EMPTY_UNC = "invalid: Server or share name is empty.";
const std::string EMPTY_NEW_UNC = "invalid: UNC server or share name is empty.";
const std::string NOT_ABSOLUTE = "invalid: Both paths should be absolute.";

// The rules once more, slowly and one step at a time.
namespace model {

std::size_t leading(const std::wstring& text)
{
    std::size_t count = 0;
    while (count < text.size() && text[count] == L'\\') {
        ++count;
    }
    return count;
}

std::size_t absolute_levels(const std::wstring& text)
{
    std::size_t count = 0;
    for (std::size_t i = leading(text); i < text.size(); ++i) {
        count += text[i] == L'\\';
    }
    return count;
}

struct Segment {
    std::size_t start;
    std::size_t length;
};

std::vector<Segment> segments(const std::wstring& text)
{
    std::vector<Segment> found;
    Segment current{std::min<std::size_t>(leading(text), 2), 0};
    for (std::size_t i = current.start; i < text.size(); ++i) {
        if (text[i] == L'\\') {
            found.push_back(current);
            current = {i + 1, 0};
        } else {
            ++current.length;
        }
    }
    found.push_back(current);
    return found;
}

void remove_segment(std::wstring& text, std::size_t i)
{
    const Segment s = segments(text).at(i);
    text.erase(s.start, s.length + (s.start + s.length < text.size() ? 1 : 0));
}

std::wstring simplify(std::wstring text)
{
    for (std::size_t i = 0; i < absolute_levels(text);) {
        const Segment s = segments(text).at(i);
        const std::wstring name = text.substr(s.start, s.length);
        if (name.empty() || name == L".") {
            remove_segment(text, i);
        } else if (name == L".." && i > 0) {
            remove_segment(text, i);
            --i;
            remove_segment(text, i);
        } else {
            ++i;
        }
    }
    return text;
}

} // namespace model

std::wstring random_text(std::mt19937& random, std::size_t longest)
{
    static const std::wstring alphabet = L"\\\\\\..:/ab";
    std::wstring text(random() % (longest + 1), L' ');
    for (wchar_t& c : text) {
        c = alphabet[random() % alphabet.size()];
    }
    return text;
}

} // namespace

TEST(Path, constructors_put_their_parts_together_and_simplify)
{
    const struct {
        Tam_path path;
        const wchar_t* text;
    } rows[] = {
        {Tam_path(), L""},
        {Tam_path(L"C:\\a\\.\\b\\..\\c.txt"), L"C:\\a\\c.txt"},
        {Tam_path(L"a\\.", L"f"), L"a\\f"},
        {Tam_path(L"\\", L"f"), L"\\f"},
        {Tam_path(L"", L"f"), L"f"},
        {Tam_path(L"a\\", L"f", L"x"), L"a\\f.x"},
        {Tam_path(L"", L"*", L""), L"*"},
        {Tam_path(L'C', L"", L""), L"C:\\"},
        {Tam_path(L'C', L"a", L"f"), L"C:\\a\\f"},
        {Tam_path(L'C', L"\\a\\", L"f", L"x"), L"C:\\a\\f.x"},
        {Tam_path(L"srv", L"shr", L"", L"f"), L"\\\\srv\\shr\\f"},
        {Tam_path(L"srv", L"shr", L"a\\b\\..", L"f", L"x"), L"\\\\srv\\shr\\a\\f.x"},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(row.path.text(), row.text);
    }
    EXPECT_EQ(thrown_by([] { Tam_path(L'1', L"a", L"f"); }), BAD_DRIVE);
    EXPECT_EQ(thrown_by([] { Tam_path(L' ', L"a", L"f", L"x"); }), BAD_DRIVE);
    EXPECT_EQ(thrown_by([] { Tam_path(L"", L"shr", L"a", L"f"); }), EMPTY_UNC);
    EXPECT_EQ(thrown_by([] { Tam_path(L"srv", L"", L"a", L"f", L"x"); }), EMPTY_UNC);
}

TEST(Path, queries_read_the_text_as_it_stands)
{
    const struct {
        const wchar_t* text;
        std::size_t levels;
        wchar_t drive;
        const wchar_t* directory;
        const wchar_t* base;
        const wchar_t* extension;
        bool absolute;
        bool file;
        bool has_directory;
    } rows[] = {
        {L"", 0, L' ', L"", L"", L"", false, false, false},
        {L"\\", 0, L' ', L"\\", L"", L"", true, false, false},
        {L"\\\\", 0, L' ', L"\\", L"", L"", true, false, false},
        {L"\\\\srv", 0, L' ', L"\\", L"srv", L"", true, true, false},
        {L"\\\\srv\\", 0, L' ', L"\\", L"", L"", true, false, false},
        {L"\\\\srv\\shr", 0, L' ', L"\\", L"shr", L"", true, true, false},
        {L"\\\\srv\\shr\\", 0, L' ', L"\\", L"", L"", true, false, false},
        {L"\\\\srv\\shr\\f", 1, L' ', L"\\", L"f", L"", true, true, false},
        {L"\\\\srv\\shr\\d\\f", 2, L' ', L"\\d\\", L"f", L"", true, true, true},
        {L"C:", 0, L'C', L"", L"C:", L"", true, true, false},
        {L"C:\\", 0, L'C', L"", L"", L"", true, false, false},
        {L"C:f.x", 0, L'C', L"", L"C:f", L"x", true, true, false},
        {L"C:\\f.x", 1, L'C', L"", L"f", L"x", true, true, false},
        {L"C:\\a\\", 1, L'C', L"\\a\\", L"", L"", true, false, true},
        {L"C:\\a\\b\\f.txt", 3, L'C', L"\\a\\b\\", L"f", L"txt", true, true, true},
        {L"CC:\\a", 2, L' ', L"CC:\\", L"a", L"", false, true, true},
        {L":::", 1, L' ', L"", L":::", L"", false, true, false},
        {L"f", 1, L' ', L"", L"f", L"", false, true, false},
        {L"\\f", 1, L' ', L"\\", L"f", L"", true, true, false},
        {L"a\\", 1, L' ', L"a\\", L"", L"", false, false, true},
        {L"\\a\\b\\", 2, L' ', L"\\a\\b\\", L"", L"", true, false, true},
        {L".profile", 1, L' ', L"", L".profile", L"", false, true, false},
        {L"a\\.profile", 2, L' ', L"a\\", L".profile", L"", false, true, true},
        {L"a.b\\c", 2, L' ', L"a.b\\", L"c", L"", false, true, true},
        {L"a.b.c", 1, L' ', L"", L"a.b", L"c", false, true, false},
        {L"a.", 1, L' ', L"", L"a", L"", false, true, false},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(testing::Message() << "text " << std::string(row.text, row.text + wcslen(row.text)));
        const Open_path path = raw(row.text);
        EXPECT_EQ(path.levels(), row.levels);
        EXPECT_TRUE(!path.legal(row.levels) && (row.levels == 0 || path.legal(row.levels - 1)));
        EXPECT_EQ(path.drive(), row.drive);
        EXPECT_EQ(path.has_drive(), row.drive != L' ');
        EXPECT_EQ(path.directory(), row.directory);
        EXPECT_EQ(path.base(), row.base);
        EXPECT_EQ(path.extension(), row.extension);
        EXPECT_EQ(path.is_absolute(), row.absolute);
        EXPECT_EQ(path.is_relative(), !row.absolute);
        EXPECT_EQ(path.is_file_path(), row.file);
        EXPECT_EQ(path.is_directory_path(), !row.file);
        EXPECT_EQ(path.has_directory(), row.has_directory);
    }
    EXPECT_TRUE(raw(L"a.").has_extension());
    EXPECT_FALSE(raw(L".a").has_extension());
    EXPECT_TRUE(Tam_path::is_dot_directory(L"..") && Tam_path::is_dot_directory(L"."));
    EXPECT_FALSE(Tam_path::is_dot_directory(L"...") || Tam_path::is_dot_directory(L""));
}

TEST(Path, levels_are_told_by_index_and_the_file_name_comes_without_extension)
{
    const Tam_path path(L"C:\\a\\c.txt");
    EXPECT_EQ(path[0], L"a");
    EXPECT_EQ(path[1], L"c");
    EXPECT_EQ(thrown_by([&] { (void)path[2]; }), NO_LEVEL);
    EXPECT_EQ(thrown_by([&] { (void)path[static_cast<std::size_t>(-1)]; }), NO_LEVEL);
    EXPECT_EQ(Tam_path()[0], L"");
    EXPECT_EQ(raw(L"C:\\a\\")[1], L""); // the empty segment behind the last separator
    EXPECT_EQ(raw(L"\\\\srv\\shr\\d.e\\f.g")[0], L"d.e");

    const Open_path unc = raw(L"\\\\srv\\shr.x");
    EXPECT_EQ(unc.level(1, true), L"shr.x");
    EXPECT_EQ(raw(L"C:\\a\\f.x").level(0, true), L"C:");
    EXPECT_EQ(raw(L"C:\\a\\f.x").level(1, false), L"f");
}

TEST(Path, unc_parts_throw_when_the_text_lacks_their_segments)
{
    const Tam_path path(L"\\\\srv\\shr\\d\\f");
    EXPECT_TRUE(path.has_unc());
    EXPECT_EQ(path.server(), L"srv");
    EXPECT_EQ(path.share(), L"shr");
    EXPECT_EQ(path.unc(), L"\\\\srv\\shr");
    EXPECT_EQ(path.file_system_root(), L"\\\\srv\\shr\\");
    EXPECT_EQ(path.root_and_directory(), L"\\\\srv\\shr\\d\\");

    const Tam_path local(L"C:\\a");
    EXPECT_TRUE(local.server().empty() && local.share().empty() && local.unc().empty());

    EXPECT_EQ(raw(L"\\\\").server(), L"");
    for (const wchar_t* text : {L"\\\\", L"\\\\srv"}) {
        Open_path bad = raw(text);
        EXPECT_EQ(thrown_by([&] { (void)bad.share(); }), NO_LEVEL);
        EXPECT_EQ(thrown_by([&] { (void)bad.unc(); }), NO_LEVEL);
        EXPECT_EQ(thrown_by([&] { (void)bad.file_system_root(); }), NO_LEVEL);
        EXPECT_EQ(thrown_by([&] { bad.share(L"x"); }), NO_LEVEL);
        EXPECT_EQ(thrown_by([&] { bad.unc(L"x", L"y"); }), NO_LEVEL);
        EXPECT_EQ(thrown_by([&] { bad.remove_unc(); }), NO_LEVEL);
        EXPECT_EQ(thrown_by([&] { bad.drive(L'C'); }), NO_LEVEL);
        EXPECT_EQ(bad.text(), text);
    }
    EXPECT_EQ(thrown_by([] { (void)raw(L"\\\\srv\\").unc(); }), EMPTY_UNC);
    EXPECT_EQ(thrown_by([] { (void)raw(L"\\\\srv\\").file_system_root(); }), EMPTY_NEW_UNC);
    EXPECT_EQ(thrown_by([] { (void)raw(L"1:\\a").file_system_root(); }), BAD_DRIVE);
}

TEST(Path, root_and_directory_join_with_one_backslash)
{
    EXPECT_EQ(Tam_path(L"C:\\a\\b\\f.txt").file_system_root(), L"C:\\");
    EXPECT_EQ(Tam_path(L"C:\\a\\b\\f.txt").root_and_directory(), L"C:\\a\\b\\");
    EXPECT_EQ(Tam_path(L"C:\\f").root_and_directory(), L"C:\\");
    EXPECT_EQ(Tam_path(L"a\\f").root_and_directory(), L"a\\");
    EXPECT_EQ(Tam_path(L"f").root_and_directory(), L"");

    // Only the backslash is joined, and the root takes the path separator alone from the path.
    Tam_path slashes(L"C:\\a\\f");
    slashes.path_separator(L'/').drive_separator(L'|');
    EXPECT_EQ(slashes.text(), L"C|/a/f");
    EXPECT_EQ(slashes.file_system_root(), L"C:/");
    EXPECT_EQ(slashes.root_and_directory(), L"C://a/");
}

TEST(Path, setters_change_their_part_alone)
{
    const struct {
        Tam_path path;
        const wchar_t* text;
    } rows[] = {
        {raw(L"C:\\a\\f.x").directory(L"d\\e"), L"C:\\d\\e\\f.x"},
        {raw(L"C:\\f.x").directory(L"d"), L"C:\\\\d\\f.x"},
        {raw(L"a\\f").directory(L"d"), L"d\\f"},
        {raw(L"\\f").directory(L"d"), L"d\\f"},
        {raw(L"C:\\a\\f").directory(L""), L"C:\\f"},
        {raw(L"a\\f").directory(L"\\"), L"\\f"},
        {raw(L"\\\\s\\h\\a\\f").directory(L"d"), L"\\\\s\\h\\d\\f"},
        {raw(L"C:\\a\\b\\f.x").level(1, L"q"), L"C:\\a\\q\\f.x"},
        {raw(L"C:\\a\\b\\f.x").level(2, L"q"), L"C:\\a\\b\\q.x"},
        {raw(L"a\\f.x").filename(L"g"), L"a\\g"},
        {raw(L"a\\").filename(L"g"), L"a\\g"},
        {raw(L"a\\f.x").base(L"g"), L"a\\g.x"},
        {raw(L"a\\f").base(L"g"), L"a\\g"},
        {raw(L"a\\f.x").extension(L"yy"), L"a\\f.yy"},
        {raw(L"a\\f.x").extension(L""), L"a\\f"},
        {raw(L"a\\.x").extension(L"y"), L"a\\.x.y"},
        {raw(L"a\\f").extension(L""), L"a\\f"},
        {raw(L"a\\").extension(L"y"), L"a\\.y"},
        {raw(L"a.b\\f").remove_extension(), L"a.b\\f"},
        {raw(L"a\\f.x.y").remove_extension(), L"a\\f.x"},
        {raw(L"a\\b").drive(L'C'), L"C:a\\b\\"},
        {raw(L"\\a\\b").drive(L'C'), L"C:\\a\\b"},
        {raw(L"").drive(L'C'), L"C:\\"},
        {raw(L"D:a").drive(L'C'), L"C:a"},
        {raw(L"\\\\s\\h\\a").drive(L'C'), L"C:\\a"},
        {raw(L"\\\\s\\h").drive(L'C'), L"C:\\"},
        {raw(L"C:a").remove_drive(), L"a"},
        {raw(L"a").remove_drive().remove_unc(), L"a"},
        {raw(L"\\\\s\\h\\a").remove_unc(), L"\\a"},
        {raw(L"\\\\s\\h").remove_unc(), L""},
        {raw(L"C:\\a").unc(L"s", L"h"), L"\\\\s\\h\\a"},
        {raw(L"C:a").unc(L"s", L"h"), L"\\\\s\\h\\a"},
        {raw(L"").unc(L"s", L"h"), L"\\\\s\\h\\"},
        {raw(L"\\\\x\\y\\a").unc(L"s", L"h"), L"\\\\s\\h\\a"},
        {raw(L"\\\\x\\y").server(L"s").share(L"h"), L"\\\\s\\h"},
        {raw(L"\\\\").server(L"s"), L"\\\\s"},
        {raw(L"C:\\a\\f").cd(L"b"), L"C:\\a\\b\\f"},
        {raw(L"C:\\a\\f").cd(L".."), L"C:\\f"},
        {raw(L"C:\\a\\f").cd(L"\\b"), L"C:\\b\\f"},
        {raw(L"C:\\f").cd(L"\\b"), L"C:\\b\\f"},
        {raw(L"C:\\a\\.\\f").cd(L""), L"C:\\a\\f"},
        {raw(L"f").cd(L"\\"), L"\\f"},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(row.path.text(), row.text);
    }
    Tam_path path(L"C:\\a");
    EXPECT_EQ(thrown_by([&] { path.server(L""); }), NO_UNC);
    EXPECT_EQ(thrown_by([&] { path.share(L"x"); }), NO_UNC);
    EXPECT_EQ(thrown_by([&] { path.unc(L"", L"x"); }), EMPTY_NEW_UNC);
    EXPECT_EQ(thrown_by([&] { path.drive(L'1'); }), BAD_DRIVE);
    EXPECT_EQ(thrown_by([&] { path.level(1, L"x"); }), NO_LEVEL);
    EXPECT_EQ(path, L"C:\\a");
    Tam_path unc(L"\\\\s\\h");
    EXPECT_EQ(thrown_by([&] { unc.server(L""); }), "invalid: Server name cannot be empty.");
    EXPECT_EQ(thrown_by([&] { unc.share(L""); }), "invalid: Share name cannot be empty.");
    EXPECT_EQ(unc, L"\\\\s\\h");
}

TEST(Path, setters_take_the_path_itself)
{
    Tam_path path(L"\\\\s\\h");
    EXPECT_EQ(path.unc(L"x", path), L"\\\\x\\\\\\s\\h");
    Tam_path name(L"a.b");
    EXPECT_EQ(name.extension(name), L"a.a.b");
    EXPECT_EQ(Tam_path(L"f").cd(Tam_path(L"f")), L"f\\f");
    name = L"ab";
    EXPECT_EQ(name.extension(name), L"ab.ab");
    EXPECT_EQ(name.cd(name), L"ab.ab\\ab.ab");
}

TEST(Path, simplify_gives)
{
    const struct {
        const wchar_t* given;
        const wchar_t* expected;
    } rows[] = {
        {L"C:\\a\\.\\b\\..\\c", L"C:\\a\\c"},
        {L"a\\\\b", L"a\\b"},
        {L"..\\a", L"..\\a"},
        {L"..\\..\\a", L"a"},
        {L"a\\..\\..\\b", L"..\\b"},
        {L"a\\..", L"a\\.."}, // a file name is left alone
        {L"a\\.", L"a\\."},
        {L".\\f", L"f"},
        {L"\\..\\a", L"\\..\\a"},
        {L"C:\\..\\a", L"a"},
        {L"\\\\srv\\..\\a", L"\\\\a"},
        {L"\\.\\\\a", L"\\\\a"},
        {L"\\\\\\a", L"\\\\\\a"},
        {L"\\\\\\a\\", L"\\\\a\\"},
        {L"a\\..\\\\b\\c", L"\\b\\c"},
        {L"\\\\\\\\", L"\\\\\\\\"},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(raw(row.given).simplify().text(), row.expected);
        EXPECT_EQ(raw(row.given).simplified().text(), row.expected);
    }
}

TEST(Path, simplifies_any_text_as_a_step_by_step_model_does)
{
    constexpr unsigned int seed = 5101;
    std::mt19937 random(seed);
    for (int round = 0; round < 30000; ++round) {
        const std::wstring text = random_text(random, 14);
        SCOPED_TRACE(testing::Message() << "seed " << seed << " text " << std::string(text.begin(), text.end()));
        const Open_path path = raw(text);
        const std::wstring simple = path.simplified();
        ASSERT_EQ(simple, model::simplify(text));
        ASSERT_EQ(raw(simple).simplify().text(), simple);
        for (std::size_t i = 0; i < path.levels() + 2; ++i) {
            const std::string thrown = thrown_by([&] { (void)path[i]; });
            ASSERT_TRUE(thrown.empty() || thrown == NO_LEVEL);
        }
        ASSERT_EQ(thrown_by([&] { (void)path.directory(); }), "");
        Open_path changed = raw(text);
        const std::wstring d = random_text(random, 3);
        ASSERT_EQ(thrown_by([&] { changed.directory(d).cd(d).base(d).extension(d).filename(d); }), "");
        const std::string thrown = thrown_by([&] { (void)path.root_and_directory(); });
        ASSERT_TRUE(thrown.empty() || path.has_drive() || path.has_unc()) << thrown;
    }
}

TEST(Path, relative_to_gives)
{
    const struct {
        const wchar_t* path;
        const wchar_t* other;
        const wchar_t* expected;
    } rows[] = {
        {L"C:\\a\\b\\f.txt", L"C:\\a\\c", L"..\\b\\f.txt"},
        {L"C:\\a\\b\\f.txt", L"C:\\a\\b", L"f.txt"},
        {L"C:\\a\\b\\", L"C:\\", L"a\\b\\"},
        {L"C:\\a\\b\\", L"C:\\a\\b\\c\\d\\e\\", L"..\\"}, // pairs of ".." take each other back
        {L"C:\\a\\f", L"C:\\x\\y", L"a\\f"},
        {L"C:\\a\\f", L"D:\\a", L"C:\\a\\f"},
        {L"C:\\a\\f", L"c:\\a", L"C:\\a\\f"},
        {L"\\\\s\\h\\a\\f", L"\\\\s\\h\\b", L"..\\a\\f"},
        {L"\\\\s\\h\\a\\f", L"\\\\s\\i\\b", L"\\\\s\\h\\a\\f"},
        {L"\\a\\f", L"\\a", L"f"},
        {L"C:", L"C:\\a", L"..\\C:"},
    };
    for (const auto& row : rows) {
        const Tam_path path(row.path);
        EXPECT_EQ(path.relative_to(row.other).text(), row.expected);
        EXPECT_EQ(path.text(), row.path);
        EXPECT_EQ(Tam_path(path).relative_to(Tam_path(row.other)).text(), row.expected);
    }
    Tam_path path(L"C:\\a\\f");
    EXPECT_EQ(thrown_by([&] { path.relative_to(L"a"); }), NOT_ABSOLUTE);
    EXPECT_EQ(thrown_by([&] { path.relative_to(L""); }), NOT_ABSOLUTE);
    EXPECT_EQ(thrown_by([] { Tam_path(L"a").relative_to(L"C:\\"); }), NOT_ABSOLUTE);
    EXPECT_EQ(thrown_by([&] { path.relative_to(L"\\\\s\\h"); }), "");
    EXPECT_EQ(thrown_by([] { raw(L"\\\\s").relative_to(L"\\a"); }), NO_LEVEL);
    EXPECT_EQ(path, L"C:\\a\\f");

    // The result is built with the default separators, whichever this path has.
    Tam_path slashes(L"C:\\a\\b\\f");
    slashes.path_separator(L'/');
    EXPECT_EQ(slashes.relative_to(L"C:\\a\\c").text(), L"..\\b\\f");
}

TEST(Path, long_texts_take_time_in_proportion)
{
    constexpr std::size_t count = 100000;
    std::wstring deep = L"C:\\";
    std::wstring up_and_down = L"C:\\";
    for (std::size_t i = 0; i < count; ++i) {
        deep += L"a\\";
        up_and_down += L"b\\.\\\\..\\";
    }
    const Tam_path path(deep);
    EXPECT_EQ(path.levels(), count);
    EXPECT_EQ(Tam_path(up_and_down), L"C:\\");
    EXPECT_EQ(Tam_path(deep + std::wstring(count, L'\\')), path);
    EXPECT_EQ(path.relative_to(L"C:\\").text(), deep.substr(3));
    EXPECT_EQ(Tam_path(L"C:\\b\\").relative_to(deep + L"c").text(), L"..\\b\\");
}

TEST(Path, separators_belong_to_the_object_and_copies_have_the_default_ones)
{
    Tam_path path(L"C:\\a/b\\f.x");
    path.path_separator(L'/').extension_separator(L'!').drive_separator(L'|');
    EXPECT_EQ(path, L"C|/a/b/f!x");
    EXPECT_EQ(path.levels(), 3U); // what was a character of a name separates now
    EXPECT_EQ(path.extension(), L"x");
    EXPECT_EQ(path.drive(), L'C');

    const Tam_path copy(path);
    EXPECT_EQ(copy.text(), path.text());
    EXPECT_EQ(copy.path_separator(), L'\\');
    EXPECT_EQ(copy.drive_separator(), L':');
    EXPECT_EQ(copy.extension_separator(), L'.');
    EXPECT_EQ(Tam_path::default_path_separator(), L'\\');
    EXPECT_EQ(copy.levels(), 1U);

    path = Tam_path(L"x\\.\\y");
    EXPECT_EQ(path, L"x\\y");
    EXPECT_EQ(path.path_separator(), L'/');
    path = std::wstring(L"x/./y");
    EXPECT_EQ(path, L"x/./y");
    // The copy is what is changed, so it is read with the default separators.
    EXPECT_EQ(std::as_const(path).simplified(), L"x/./y");
    EXPECT_EQ(std::as_const(path).cd(L"d"), L"d\\x/./y");
    EXPECT_EQ(path.simplify(), L"x/y");
}

TEST(Path, protected_operations_tell_positions)
{
    const Open_path path = raw(L"\\\\s\\h\\dd\\f.x");
    EXPECT_EQ(path.find_filename(), 9U);
    EXPECT_EQ(path.find_extension_separator(), 10U);
    EXPECT_EQ(raw(L"a\\.x").find_extension_separator(), std::wstring::npos);
    EXPECT_EQ(path.absolute_levels(), 3U);
    std::size_t length = 0;
    EXPECT_EQ(path.find_level(2, length), 6U);
    EXPECT_EQ(length, 2U);
    EXPECT_EQ(path.find_directory(length), 5U);
    EXPECT_EQ(length, 4U);
    EXPECT_EQ(path.make_unc(L"x", L"y"), L"\\\\x\\y");
    EXPECT_EQ(thrown_by([&] { (void)path.find_level(4, length); }), NO_LEVEL);
    EXPECT_EQ(thrown_by([] { Open_path::validate_drive_letter(L'z'); }), "");
    EXPECT_EQ(thrown_by([] { Open_path::validate_drive_letter(L'@'); }), BAD_DRIVE);
    Open_path custom = raw(L"a");
    custom.path_separator(L'/');
    custom.init_separators();
    EXPECT_EQ(custom.path_separator(), L'\\');

    std::wstring form = L"\\";
    custom.directory_form(form, true);
    EXPECT_EQ(form, L"\\");
    form.clear();
    custom.directory_form(form, false);
    EXPECT_EQ(form, L"");
    custom.directory_form(form, true);
    EXPECT_EQ(form, L"\\");
}
