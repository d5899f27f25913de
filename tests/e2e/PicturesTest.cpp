// Pictures of dialogs drawn by achost render and the picture action, against committed references,
// and what achost render says to input it cannot draw.
#include "HostTest.hpp"

#include <cairo.h>

#include <algorithm>
#include <tuple>

namespace {

struct Picture {
    int width = 0, height = 0;
    std::vector<UInt32> pixels; // ARGB, row by row
};

Picture Read(const std::string& path) {
    Picture picture;
    cairo_surface_t* png = cairo_image_surface_create_from_png(path.c_str());
    if (cairo_surface_status(png) == CAIRO_STATUS_SUCCESS) {
        picture.width = cairo_image_surface_get_width(png);
        picture.height = cairo_image_surface_get_height(png);
        for (int y = 0; y < picture.height; ++y) {
            const auto* row = reinterpret_cast<const UInt32*>(cairo_image_surface_get_data(png) +
                                                              y * cairo_image_surface_get_stride(png));
            picture.pixels.insert(picture.pixels.end(), row, row + picture.width);
        }
    }
    cairo_surface_destroy(png);
    return picture;
}

int Channel(UInt32 pixel, int c) {
    return static_cast<int>((pixel >> (8 * c)) & 0xFF);
}

// The pixels of `a` that have no pixel of `b` at most one pixel away whose three channels all lie
// within 64 of theirs. The neighbourhood lets pass what another release of the font libraries changes
// (antialiasing, a glyph moved by a pixel); a missing, moved or recoloured item or text does not.
int Unmatched(const Picture& a, const Picture& b) {
    int unmatched = 0;
    for (int y = 0; y < a.height; ++y)
        for (int x = 0; x < a.width; ++x) {
            bool matched = false;
            for (int ny = std::max(0, y - 1); ny <= std::min(b.height - 1, y + 1) && !matched; ++ny)
                for (int nx = std::max(0, x - 1); nx <= std::min(b.width - 1, x + 1) && !matched; ++nx) {
                    const UInt32 p = a.pixels[y * a.width + x], q = b.pixels[ny * b.width + nx];
                    matched = std::abs(Channel(p, 0) - Channel(q, 0)) <= 64 &&
                              std::abs(Channel(p, 1) - Channel(q, 1)) <= 64 &&
                              std::abs(Channel(p, 2) - Channel(q, 2)) <= 64;
                }
            unmatched += matched ? 0 : 1;
        }
    return unmatched;
}

// The differing pixels of two same-sized pictures, in per mille of their pixels; a picture without
// text differs by 8, one with the check box cleared by 1.8.
double Difference(const Picture& a, const Picture& b) {
    return 1000.0 * (Unmatched(a, b) + Unmatched(b, a)) / std::max(1, a.width * a.height);
}

constexpr double kBudget = 1; // per mille of the pixels

class PicturesTest : public xn_test::TempFolderTest {
protected:
    // Runs `achost ARGUMENTS`; its exit code, and what it printed on both streams in `output`.
    int Achost(const std::string& arguments, std::string* output) {
        return xn_test::RunProgram("env TMPDIR=" + temp.PathOf("") + " " ACHOST_PROGRAM " " + arguments +
                                       " </dev/null 2>&1",
                                   output);
    }
    std::string Script(const std::string& name, const std::string& lines) {
        temp.Write(temp.PathOf(name), lines);
        return temp.PathOf(name);
    }
};

// The references in pictures/ are achost render's own pictures of the same dialogs; when the look
// changes on purpose they are drawn again with the first and third rows' arguments.
TEST_F(PicturesTest, DialogsLookLikeTheirReferencesWithinTheBudget) {
    const std::string out = temp.PathOf("out.png");
    const std::tuple<const char*, std::string, const char*, bool> cases[] = {
        // Items at their frames on a resized dialog, a hidden item, a disabled one, a check mark, a
        // list with two tab fields, an icon and a selected row.
        {"found by the walker", "render 32600 -o " + out + " " FIXTURE_DIALOGS, "fixture-32600.png", true},
        {"the picture action",
         "--shared-folder " + temp.PathOf("shared") + " --script " +
             Script("a.acs", "menu 1\npicture \"" + out + "\"\n") + " " FIXTURE_DIALOGS,
         "fixture-32600.png", true},
        // Japanese text, the flags of the list's rows.
        {"Japanese", "render 32734 --lang 5 -o " + out + " " ALL_LANGUAGES_ADDON, "language-jap.png", true},
        {"the check mark cleared",
         "render 32600 --script " + Script("b.acs", "menu 1\nclick 5\n") + " -o " + out + " " FIXTURE_DIALOGS,
         "fixture-32600.png", false},
    };
    for (const auto& [name, arguments, referenceFile, alike] : cases) {
        SCOPED_TRACE(name);
        std::string output;
        ASSERT_EQ(0, Achost(arguments, &output)) << output;
        const Picture drawn = Read(out), reference = Read(E2E_DIR "/pictures/" + std::string(referenceFile));
        ASSERT_EQ(reference.width, drawn.width);
        ASSERT_EQ(reference.height, drawn.height);
        if (alike)
            EXPECT_LE(Difference(drawn, reference), kBudget);
        else
            EXPECT_GT(Difference(drawn, reference), kBudget);
        std::remove(out.c_str());
    }
}

TEST_F(PicturesTest, EachProblemIsNamedWithItsExitCode) {
    const std::string out = temp.PathOf("out.png"), empty = Script("empty.acs", "");
    // message: the start of a line of the output. The add-on is the dialog fixture unless a row names one.
    const std::tuple<const char*, std::string, int, std::string> cases[] = {
        {"no such dialog", "31000 -o " + out, 2,
         "achost render: the add-on has no dialog 31000 (its 'GDLG' resources: 32600, 32601, 32602)"},
        {"never opened", "32602 -o " + out, 2,
         "achost render: dialog 32602 is never opened by a command of the add-on (its commands open 32600, "
         "32601); --script FILE can take the steps that show it"},
        {"not open after the script", "32600 --script " + empty + " -o " + out, 2,
         "achost render: dialog 32600 is not open at the end of " + empty},
        {"folder missing", "32600 -o " + temp.PathOf("no/out.png"), 2,
         "achost render: cannot write the picture " + temp.PathOf("no/out.png") +
             ": No such file or directory"},
        {"a folder", "32600 -o " + temp.PathOf(""), 2,
         "achost render: cannot write the picture " + temp.PathOf("") + ": it is a folder"},
        {"language 7", "32600 --lang 7 -o " + out, 2,
         "achost render: --lang takes a language number 0 to 6 or its name (ita int fra ger spa jap rus), "
         "not '7'"},
        {"not a dialog ID", "about -o " + out, 2,
         "achost render: RESID is a dialog's resource ID, 1 to 32767, not 'about'"},
        {"a language the add-on does not offer", "32734 --lang jap -o " + out + " " MORAVEL_LIBRARY, 0,
         "achost render: the add-on does not offer jap; drawn in int"},
        {"a title too long for a palette",
         "32601 --check-fit --script " + Script("p.acs", "menu 3\n") + " -o " + out, 1,
         "achost render: dialog 32601, its title: \"Fixture palette\" needs "},
    };
    for (const auto& [name, arguments, exitCode, message] : cases) {
        SCOPED_TRACE(name);
        std::string output;
        const bool namesAddon = arguments.find(MORAVEL_LIBRARY) != std::string::npos;
        EXPECT_EQ(exitCode, Achost("render " + arguments + (namesAddon ? "" : " " FIXTURE_DIALOGS), &output));
        EXPECT_NE(std::string::npos, ("\n" + output).find("\n" + message)) << output;
        std::remove(out.c_str());
    }
}

} // namespace
