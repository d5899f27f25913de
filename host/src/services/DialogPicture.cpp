// Dialog pictures: the fonts the host picks, the look of each kind of item, and the text boxes that
// the drawing and the cut-off measurement share, so that what is measured is what is drawn.
#include "achost/DialogPicture.hpp"

#include <cairo.h>
#include <fcntl.h>
#include <fontconfig/fontconfig.h>
#include <pango/pangocairo.h>
#include <pango/pangofc-fontmap.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cmath>
#include <cstdlib>
#include <cstring>
#include <map>

namespace achost {

namespace {

// Geometry ---------------------------------------------------------------------------------------

constexpr int kTitleBarHeight = 22;
constexpr int kBorder = 1;
constexpr int kDefaultRowHeight = 18;
constexpr int kLargestPicture = 8192;
constexpr double kMarkSize = 14;     // check box and radio button
constexpr double kMarkGap = 6;       // between the mark and the text
constexpr double kButtonInset = 6;   // between a button's edge and its text
constexpr double kCloseBoxZone = 60; // the title bar's left and right ends, where the title never goes

struct Rgb {
    double r, g, b;
};
constexpr Rgb kWindow = {0.925, 0.925, 0.925};
constexpr Rgb kTitleTop = {0.92, 0.92, 0.92};
constexpr Rgb kTitleBottom = {0.84, 0.84, 0.84};
constexpr Rgb kFrame = {0.55, 0.55, 0.55};
constexpr Rgb kEdge = {0.66, 0.66, 0.66};
constexpr Rgb kEdgeDisabled = {0.80, 0.80, 0.80};
constexpr Rgb kField = {1, 1, 1};
constexpr Rgb kFieldDisabled = {0.96, 0.96, 0.96};
constexpr Rgb kText = {0.11, 0.11, 0.11};
constexpr Rgb kTextDisabled = {0.60, 0.60, 0.60};
constexpr Rgb kAccent = {0.19, 0.45, 0.90};
constexpr Rgb kSelectionDisabled = {0.82, 0.82, 0.82};
constexpr Rgb kLine = {0.74, 0.74, 0.74};
constexpr Rgb kLineLight = {1, 1, 1};
constexpr Rgb kCloseBox = {1.0, 0.37, 0.34};

void SetColor(cairo_t* cr, const Rgb& c, double alpha = 1) {
    cairo_set_source_rgba(cr, c.r, c.g, c.b, alpha);
}

void RoundedRect(cairo_t* cr, double x, double y, double w, double h, double r) {
    r = std::min({r, w / 2, h / 2});
    cairo_new_sub_path(cr);
    cairo_arc(cr, x + w - r, y + r, r, -M_PI / 2, 0);
    cairo_arc(cr, x + w - r, y + h - r, r, 0, M_PI / 2);
    cairo_arc(cr, x + r, y + h - r, r, M_PI / 2, M_PI);
    cairo_arc(cr, x + r, y + r, r, M_PI, 3 * M_PI / 2);
    cairo_close_path(cr);
}

// A filled shape with a one-pixel edge, on the pixel grid.
void Panel(cairo_t* cr, double x, double y, double w, double h, double radius, const Rgb& fill,
           const Rgb& edge) {
    RoundedRect(cr, x + 0.5, y + 0.5, w - 1, h - 1, radius);
    SetColor(cr, fill);
    cairo_fill_preserve(cr);
    SetColor(cr, edge);
    cairo_set_line_width(cr, 1);
    cairo_stroke(cr);
}

// Fonts ------------------------------------------------------------------------------------------

// The font files a picture may use: the styles named of each family (every style when none is
// named). Pango asks for the first family and finds the characters it lacks (Japanese) in the
// others; no other font of the machine is ever seen.
struct FontFamily {
    const char* name;
    std::vector<std::string> styles;
};
const FontFamily kFontFamilies[] = {{"DejaVu Sans", {"Book", "Bold"}}, {"MotoyaLCedar", {}}};
const char kFontList[] = "DejaVu Sans, MotoyaLCedar";
// The package that installs each family on Debian, named when one is missing.
const char* const kFontPackages[] = {"fonts-dejavu-core", "fonts-motoya-l-cedar"};

// Faces the host lacks are made from the ones it has, as a desktop's fontconfig setup makes them:
// bold asked of a face lighter than bold (MotoyaLCedar has one weight) is emboldened, italic or
// oblique asked of an upright face is slanted. Cairo draws both and pango measures what cairo draws,
// so the picture and the cut-off measurement see the same glyphs.
const char kSyntheticFaces[] = R"(<?xml version="1.0"?>
<!DOCTYPE fontconfig SYSTEM "urn:fontconfig:fonts.dtd">
<fontconfig>
  <match target="font">
    <test name="weight" compare="less_eq"><const>medium</const></test>
    <test target="pattern" name="weight" compare="more_eq"><const>bold</const></test>
    <edit name="embolden" mode="assign"><bool>true</bool></edit>
    <edit name="weight" mode="assign"><const>bold</const></edit>
  </match>
  <match target="font">
    <test name="slant"><const>roman</const></test>
    <test target="pattern" name="slant" compare="not_eq"><const>roman</const></test>
    <edit name="matrix" mode="assign">
      <times>
        <name>matrix</name>
        <matrix><double>1</double><double>0.2</double><double>0</double><double>1</double></matrix>
      </times>
    </edit>
    <edit name="slant" mode="assign"><const>oblique</const></edit>
    <edit name="embeddedbitmap" mode="assign"><bool>false</bool></edit>
  </match>
</fontconfig>
)";

// The host's fonts: a fontconfig setup of its own that holds only the files of kFontFamilies and the
// rules of kSyntheticFaces, and a pango font map over it. Made at the first picture; released when the
// process ends, fontconfig's own caches included, so that a leak check sees nothing left behind.
struct Fonts {
    FcConfig* config = nullptr;
    PangoFontMap* map = nullptr;
    std::string problem; // why there are no fonts
};

Fonts sFonts;

void ReleaseFonts() {
    if (sFonts.map != nullptr)
        g_object_unref(sFonts.map);
    FcConfigAppFontClear(sFonts.config);
    FcConfigDestroy(sFonts.config);
    FcFini();
}

// Adds the files of the family's styles, as the system's fontconfig setup lists them; how many.
int AddFamily(FcConfig* own, const FontFamily& family) {
    FcPattern* pattern = FcPatternCreate();
    FcPatternAddString(pattern, FC_FAMILY, reinterpret_cast<const FcChar8*>(family.name));
    FcObjectSet* objects = FcObjectSetBuild(FC_FILE, FC_STYLE, FC_FAMILY, nullptr);
    FcFontSet* found = FcFontList(FcConfigGetCurrent(), pattern, objects);
    int added = 0;
    for (int i = 0; found != nullptr && i < found->nfont; ++i) {
        FcChar8 *file = nullptr, *style = nullptr, *name = nullptr;
        if (FcPatternGetString(found->fonts[i], FC_FILE, 0, &file) != FcResultMatch ||
            FcPatternGetString(found->fonts[i], FC_STYLE, 0, &style) != FcResultMatch ||
            FcPatternGetString(found->fonts[i], FC_FAMILY, 0, &name) != FcResultMatch ||
            std::strcmp(reinterpret_cast<const char*>(name), family.name) != 0)
            continue;
        const std::string styleName = reinterpret_cast<const char*>(style);
        if (family.styles.empty() ||
            std::find(family.styles.begin(), family.styles.end(), styleName) != family.styles.end())
            added += FcConfigAppFontAddFile(own, file) ? 1 : 0;
    }
    if (found != nullptr)
        FcFontSetDestroy(found);
    FcObjectSetDestroy(objects);
    FcPatternDestroy(pattern);
    return added;
}

const Fonts& TheFonts() {
    if (sFonts.config != nullptr || !sFonts.problem.empty())
        return sFonts;
    // The system's setup is loaded first, as pango's font map would load it on a thread of its own.
    if (!FcInit()) {
        sFonts.problem = "fontconfig cannot read its setup";
        return sFonts;
    }
    sFonts.config = FcConfigCreate();
    std::atexit(ReleaseFonts);
    if (!FcConfigParseAndLoadFromMemory(sFonts.config, reinterpret_cast<const FcChar8*>(kSyntheticFaces),
                                        FcTrue))
        sFonts.problem = "fontconfig cannot read the host's rules for bold and slanted faces";
    for (size_t f = 0; f < std::size(kFontFamilies) && sFonts.problem.empty(); ++f)
        if (AddFamily(sFonts.config, kFontFamilies[f]) == 0)
            sFonts.problem = std::string("the font \"") + kFontFamilies[f].name +
                             "\" is not installed (Debian package " + kFontPackages[f] +
                             "; scripts/install-deps.sh installs it)";
    if (sFonts.problem.empty()) {
        sFonts.map = pango_cairo_font_map_new_for_font_type(CAIRO_FONT_TYPE_FT);
        if (sFonts.map == nullptr)
            sFonts.problem = "cairo cannot draw text with FreeType fonts";
        else
            pango_fc_font_map_set_config(PANGO_FC_FONT_MAP(sFonts.map), sFonts.config);
    }
    return sFonts;
}

// A context for laying out text: grey antialiasing, no hinting, so that sizes do not depend on
// where the text lands on the pixel grid.
PangoContext* NewContext() {
    PangoContext* context = pango_font_map_create_context(TheFonts().map);
    cairo_font_options_t* options = cairo_font_options_create();
    cairo_font_options_set_antialias(options, CAIRO_ANTIALIAS_GRAY);
    cairo_font_options_set_hint_style(options, CAIRO_HINT_STYLE_NONE);
    cairo_font_options_set_hint_metrics(options, CAIRO_HINT_METRICS_OFF);
    pango_cairo_context_set_font_options(context, options);
    cairo_font_options_destroy(options);
    return context;
}

bool StartsWith(const std::string& text, const char* prefix) {
    return text.compare(0, std::strlen(prefix), prefix) == 0;
}

// The dialog manager's fonts by name ("LargePlain", "SmallBold", "ExtraSmallItalic"...), in pixels:
// large 13, small 11, extra small 9; large plain when the item names none.
PangoFontDescription* FontOf(const std::string& name) {
    PangoFontDescription* font = pango_font_description_from_string(kFontList);
    const int size = StartsWith(name, "ExtraSmall") ? 9 : StartsWith(name, "Small") ? 11 : 13;
    pango_font_description_set_absolute_size(font, size * PANGO_SCALE);
    if (name.find("Bold") != std::string::npos)
        pango_font_description_set_weight(font, PANGO_WEIGHT_BOLD);
    if (name.find("Italic") != std::string::npos)
        pango_font_description_set_style(font, PANGO_STYLE_ITALIC);
    return font;
}

// Icons ------------------------------------------------------------------------------------------

struct PngSource {
    const std::string* bytes;
    size_t at;
};

cairo_status_t ReadPng(void* closure, unsigned char* data, unsigned int length) {
    PngSource* source = static_cast<PngSource*>(closure);
    if (source->bytes->size() - source->at < length)
        return CAIRO_STATUS_READ_ERROR;
    std::memcpy(data, source->bytes->data() + source->at, length);
    source->at += length;
    return CAIRO_STATUS_SUCCESS;
}

// The 'GICN' images one picture uses, decoded once, with the icon's transparent colour cleared.
class Icons {
public:
    explicit Icons(const ResourceSet& resources) : resources(resources) {}
    ~Icons() {
        for (auto& entry : decoded)
            if (entry.second != nullptr)
                cairo_surface_destroy(entry.second);
    }
    Icons(const Icons&) = delete;
    Icons& operator=(const Icons&) = delete;

    // The icon's image, or null when there is no such icon or its image cannot be read.
    cairo_surface_t* Get(short id) {
        const auto known = decoded.find(id);
        if (known != decoded.end())
            return known->second;
        return decoded[id] = Decode(resources.Find(ResType("GICN"), id));
    }
    double Width(short id) {
        cairo_surface_t* image = id != 0 ? Get(id) : nullptr;
        return image != nullptr ? cairo_image_surface_get_width(image) : 0;
    }

private:
    static cairo_surface_t* Decode(const Resource* res) {
        if (res == nullptr || res->data.empty())
            return nullptr;
        PngSource source{&res->data, 0};
        cairo_surface_t* png = cairo_image_surface_create_from_png_stream(ReadPng, &source);
        if (cairo_surface_status(png) != CAIRO_STATUS_SUCCESS) {
            cairo_surface_destroy(png);
            return nullptr;
        }
        const int w = cairo_image_surface_get_width(png), h = cairo_image_surface_get_height(png);
        cairo_surface_t* image = cairo_image_surface_create(CAIRO_FORMAT_ARGB32, w, h);
        cairo_t* cr = cairo_create(image);
        cairo_set_source_surface(cr, png, 0, 0);
        cairo_paint(cr);
        cairo_destroy(cr);
        cairo_surface_destroy(png);
        // The body is { "name" R G B }: pixels of that colour are transparent.
        std::vector<Int64> key;
        for (const auto& line : res->body)
            for (const ResToken& token : line)
                if (token.kind == ResToken::Number)
                    key.push_back(token.number);
        if (key.size() == 3) {
            cairo_surface_flush(image);
            const UInt32 transparent = 0xFF000000u | static_cast<UInt32>(key[0] << 16 | key[1] << 8 | key[2]);
            unsigned char* rows = cairo_image_surface_get_data(image);
            for (int y = 0; y < h; ++y) {
                UInt32* row = reinterpret_cast<UInt32*>(rows + y * cairo_image_surface_get_stride(image));
                for (int x = 0; x < w; ++x)
                    row[x] = row[x] == transparent ? 0 : row[x];
            }
            cairo_surface_mark_dirty(image);
        }
        return image;
    }

    const ResourceSet& resources;
    std::map<short, cairo_surface_t*> decoded;
};

void DrawIcon(cairo_t* cr, cairo_surface_t* icon, double x, double y, bool enabled) {
    if (icon == nullptr)
        return;
    cairo_set_source_surface(cr, icon, std::round(x), std::round(y));
    cairo_paint_with_alpha(cr, enabled ? 1 : 0.4);
}

void DrawIconCentered(cairo_t* cr, cairo_surface_t* icon, const DialogItem& item) {
    if (icon != nullptr)
        DrawIcon(cr, icon, item.left + (item.width - cairo_image_surface_get_width(icon)) / 2.0,
                 item.top + (item.height - cairo_image_surface_get_height(icon)) / 2.0, item.enabled);
}

// Text boxes -------------------------------------------------------------------------------------

enum class Ink { Normal, Disabled, OnAccent };

// One text as the picture shows it: its box in the client area, clipped there.
struct TextBox {
    short item = 0; // 0: the title
    std::string text;
    std::string font;
    double x = 0, y = 0, w = 0, h = 0;
    bool wrap = false; // wrapped at word boundaries to the box's width
    PangoAlignment align = PANGO_ALIGN_LEFT;
    bool centerVertically = false; // else from the top
    Ink ink = Ink::Normal;
    bool measured = true; // counts for cut-off texts
};

struct Placed {
    PangoLayout* layout = nullptr;
    double dx = 0, dy = 0;       // the layout's origin in the box
    PangoRectangle inkExtents{}; // in pango units, from the layout's origin
};

Placed Place(PangoContext* context, const TextBox& box) {
    Placed placed;
    placed.layout = pango_layout_new(context);
    PangoFontDescription* font = FontOf(box.font);
    pango_layout_set_font_description(placed.layout, font);
    pango_font_description_free(font);
    pango_layout_set_text(placed.layout, box.text.c_str(), -1);
    if (box.wrap) {
        pango_layout_set_width(placed.layout, static_cast<int>(box.w * PANGO_SCALE));
        pango_layout_set_wrap(placed.layout, PANGO_WRAP_WORD);
        pango_layout_set_alignment(placed.layout, box.align);
    }
    PangoRectangle logical;
    pango_layout_get_extents(placed.layout, &placed.inkExtents, &logical);
    const double width = logical.width / double(PANGO_SCALE), height = logical.height / double(PANGO_SCALE);
    if (!box.wrap)
        placed.dx = box.align == PANGO_ALIGN_CENTER  ? (box.w - width) / 2
                    : box.align == PANGO_ALIGN_RIGHT ? box.w - width
                                                     : 0;
    placed.dy = box.centerVertically ? std::round((box.h - height) / 2) : 0;
    return placed;
}

TextBox Box(short n, const DialogItem& item, const std::string& text, double x, double y, double w,
            double h) {
    TextBox box;
    box.item = n;
    box.text = text;
    box.font = item.font;
    box.x = x, box.y = y, box.w = w, box.h = h;
    box.ink = item.enabled ? Ink::Normal : Ink::Disabled;
    return box;
}

bool IsList(const DialogItem& item) {
    return item.IsList() || item.kind == "SingleSelListView" || item.kind == "MultiSelTreeView";
}

bool IsEdit(const std::string& kind) {
    return kind == "TextEdit" || kind == "MultiLineEdit" || kind == "PosIntEdit" || kind == "IntEdit" ||
           kind == "LengthEdit" || kind == "RealEdit";
}

bool IsDefaultButton(const Dialog& dialog, short n) {
    return n == DG_OK && dialog.kind == DialogKind::Modal && dialog.items[0].kind == "Button" &&
           dialog.items[0].enabled;
}

short RowHeight(const DialogItem& list) {
    return list.rowHeight > 0 ? list.rowHeight : kDefaultRowHeight;
}

// How many rows of a list show whole, from the top (a list shows no part rows: it scrolls).
size_t WholeRows(const DialogItem& list) {
    const int inner = std::max(0, list.height - 2);
    return std::min(list.rows.size(), static_cast<size_t>(inner / RowHeight(list)));
}

// The tab fields of a list's rows, from the row's left edge: as the add-on placed them, else the
// row's width shared evenly.
std::vector<TabField> TabFields(const DialogItem& list) {
    const short count = std::max<short>(1, list.tabFields);
    const short inner = static_cast<short>(std::max(0, list.width - 2));
    std::vector<TabField> fields;
    for (short k = 0; k < count; ++k) {
        const bool placed =
            static_cast<size_t>(k) < list.tabLayout.size() &&
            list.tabLayout[static_cast<size_t>(k)].end > list.tabLayout[static_cast<size_t>(k)].begin;
        fields.push_back(placed ? list.tabLayout[static_cast<size_t>(k)]
                                : TabField{static_cast<short>(inner * k / count),
                                           static_cast<short>(inner * (k + 1) / count)});
    }
    return fields;
}

constexpr double kIconGap = 4; // between a row's icon and its text

// Every text of item `n` as the picture shows it.
std::vector<TextBox> TextBoxes(const Dialog& dialog, short n, Icons& icons) {
    const DialogItem& item = dialog.items[static_cast<size_t>(n) - 1];
    std::vector<TextBox> boxes;
    const double x = item.left, y = item.top, w = item.width, h = item.height;
    const std::string& kind = item.kind;
    if (kind == "Button" || kind == "PopupControl") {
        const double arrow = kind == "PopupControl" ? 16 : 0;
        TextBox box = Box(n, item, item.text, x + kButtonInset, y + 1, w - 2 * kButtonInset - arrow, h - 2);
        box.align = kind == "Button" ? PANGO_ALIGN_CENTER : PANGO_ALIGN_LEFT;
        box.centerVertically = true;
        if (kind == "Button" && IsDefaultButton(dialog, n))
            box.ink = Ink::OnAccent;
        boxes.push_back(box);
    } else if (kind == "LeftText" || kind == "CenterText" || kind == "RightText") {
        TextBox box = Box(n, item, item.text, x, y, w, h);
        box.wrap = true;
        box.align = kind == "LeftText"     ? PANGO_ALIGN_LEFT
                    : kind == "CenterText" ? PANGO_ALIGN_CENTER
                                           : PANGO_ALIGN_RIGHT;
        boxes.push_back(box);
    } else if (kind == "CheckBox" || kind == "RadioButton") {
        TextBox box = Box(n, item, item.text, x + kMarkSize + kMarkGap, y, w - kMarkSize - kMarkGap, h);
        box.centerVertically = true;
        boxes.push_back(box);
    } else if (kind == "GroupBox") {
        boxes.push_back(Box(n, item, item.text, x + 2, y, w - 4, std::min(h, 16.0)));
    } else if (IsEdit(kind)) {
        TextBox box = Box(n, item, item.text, x + 4, y + 2, w - 8, h - 4);
        box.wrap = kind == "MultiLineEdit";
        box.centerVertically = !box.wrap;
        box.measured = false;
        boxes.push_back(box);
    } else if (IsList(item)) {
        const std::vector<TabField> fields = TabFields(item);
        const double rowHeight = RowHeight(item);
        for (size_t r = 0; r < item.rows.size() && y + 1 + r * rowHeight < y + h - 1; ++r) {
            const ListRow& row = item.rows[r];
            const bool selected = item.selected == static_cast<short>(r + 1);
            for (size_t k = 0; k < fields.size() && k < row.tabs.size(); ++k) {
                const double icon = k == 0 && row.icon != 0 ? icons.Width(row.icon) + kIconGap : 0;
                TextBox box =
                    Box(n, item, row.tabs[k], x + 1 + fields[k].begin + 2 + icon, y + 1 + r * rowHeight,
                        fields[k].end - fields[k].begin - 4 - icon, rowHeight);
                box.centerVertically = true;
                box.measured = r < WholeRows(item);
                if (selected && item.enabled)
                    box.ink = Ink::OnAccent;
                boxes.push_back(box);
            }
        }
    }
    for (auto box = boxes.begin(); box != boxes.end();)
        box = box->text.empty() ? boxes.erase(box) : box + 1;
    return boxes;
}

TextBox TitleBox(const Dialog& dialog) {
    TextBox box;
    box.text = dialog.title;
    box.x = kCloseBoxZone;
    box.y = -kTitleBarHeight;
    box.w = dialog.width - 2 * kCloseBoxZone;
    box.h = kTitleBarHeight;
    box.align = PANGO_ALIGN_CENTER;
    box.centerVertically = true;
    return box;
}

void DrawText(cairo_t* cr, PangoContext* context, const TextBox& box) {
    Placed placed = Place(context, box);
    cairo_save(cr);
    cairo_rectangle(cr, box.x, box.y, box.w, box.h);
    cairo_clip(cr);
    SetColor(cr, box.ink == Ink::OnAccent ? kField : box.ink == Ink::Disabled ? kTextDisabled : kText);
    cairo_move_to(cr, box.x + placed.dx, box.y + placed.dy);
    pango_cairo_show_layout(cr, placed.layout);
    cairo_restore(cr);
    g_object_unref(placed.layout);
}

// Chrome -----------------------------------------------------------------------------------------

void DrawCheckMark(cairo_t* cr, double x, double y) {
    cairo_move_to(cr, x + 3.5, y + 7.5);
    cairo_line_to(cr, x + 6, y + 10);
    cairo_line_to(cr, x + 10.5, y + 4);
    cairo_set_line_width(cr, 2);
    SetColor(cr, kField);
    cairo_stroke(cr);
}

void DrawList(cairo_t* cr, const DialogItem& item, Icons& icons) {
    Panel(cr, item.left, item.top, item.width, item.height, 0, item.enabled ? kField : kFieldDisabled,
          item.enabled ? kEdge : kEdgeDisabled);
    cairo_save(cr);
    cairo_rectangle(cr, item.left + 1, item.top + 1, item.width - 2, item.height - 2);
    cairo_clip(cr);
    const double rowHeight = RowHeight(item);
    const std::vector<TabField> fields = TabFields(item);
    for (size_t r = 0; r < item.rows.size(); ++r) {
        const double top = item.top + 1 + r * rowHeight;
        if (top >= item.top + item.height - 1)
            break;
        if (item.selected == static_cast<short>(r + 1)) {
            cairo_rectangle(cr, item.left + 1, top, item.width - 2, rowHeight);
            SetColor(cr, item.enabled ? kAccent : kSelectionDisabled);
            cairo_fill(cr);
        }
        if (cairo_surface_t* icon = item.rows[r].icon != 0 ? icons.Get(item.rows[r].icon) : nullptr)
            DrawIcon(cr, icon, item.left + 1 + fields[0].begin + 2,
                     top + (rowHeight - cairo_image_surface_get_height(icon)) / 2, item.enabled);
    }
    cairo_restore(cr);
}

void DrawItem(cairo_t* cr, const Dialog& dialog, short n, Icons& icons) {
    const DialogItem& item = dialog.items[static_cast<size_t>(n) - 1];
    const double x = item.left, y = item.top, w = item.width, h = item.height;
    const Rgb& edge = item.enabled ? kEdge : kEdgeDisabled;
    const std::string& kind = item.kind;
    if (kind == "Button" || kind == "PopupControl") {
        Panel(cr, x, y, w, h, 4, IsDefaultButton(dialog, n) && kind == "Button" ? kAccent : kField, edge);
        if (kind == "PopupControl") {
            cairo_move_to(cr, x + w - 16, y + h / 2 - 2);
            cairo_line_to(cr, x + w - 12, y + h / 2 + 2);
            cairo_line_to(cr, x + w - 8, y + h / 2 - 2);
            SetColor(cr, item.enabled ? kText : kTextDisabled);
            cairo_set_line_width(cr, 1.5);
            cairo_stroke(cr);
        }
    } else if (kind == "IconButton" || kind == "IconPushCheck" || kind == "IconPushRadio") {
        Panel(cr, x, y, w, h, 4, item.value != 0 && kind != "IconButton" ? kLine : kField, edge);
        DrawIconCentered(cr, icons.Get(item.icon), item);
    } else if (kind == "Icon" || kind == "IconRadioButton") {
        if (kind == "IconRadioButton" && item.value != 0)
            Panel(cr, x, y, w, h, 3, kLine, edge);
        DrawIconCentered(cr, icons.Get(item.icon), item);
    } else if (kind == "CheckBox" || kind == "RadioButton") {
        const double top = std::round(y + (h - kMarkSize) / 2);
        const bool on = item.value != 0;
        const Rgb& fill = on && item.enabled ? kAccent : on ? kTextDisabled : kField;
        Panel(cr, x, top, kMarkSize, kMarkSize, kind == "CheckBox" ? 3 : kMarkSize / 2, fill,
              on ? fill : edge);
        if (on && kind == "CheckBox")
            DrawCheckMark(cr, x, top);
        else if (on) {
            cairo_arc(cr, x + kMarkSize / 2, top + kMarkSize / 2, 3, 0, 2 * M_PI);
            SetColor(cr, kField);
            cairo_fill(cr);
        }
    } else if (kind == "Separator") {
        const bool across = w >= h;
        const double length = across ? w : h;
        for (int line = 0; line < 2; ++line) {
            cairo_rectangle(cr, across ? x : x + line, across ? y + line : y, across ? length : 1,
                            across ? 1 : length);
            SetColor(cr, line == 0 ? kLine : kLineLight);
            cairo_fill(cr);
        }
    } else if (kind == "GroupBox") {
        Panel(cr, x, y + 18, w, h - 18, 4, kWindow, kLine);
    } else if (IsEdit(kind)) {
        Panel(cr, x, y, w, h, 0, item.enabled ? kField : kFieldDisabled, edge);
    } else if (IsList(item)) {
        DrawList(cr, item, icons);
    } else if (kind == "Slider") {
        const double mid = std::round(y + h / 2);
        Panel(cr, x, mid - 2, w, 4, 2, kLine, kLine);
        cairo_arc(cr, x + 8, mid, 7, 0, 2 * M_PI);
        SetColor(cr, kField);
        cairo_fill_preserve(cr);
        SetColor(cr, edge);
        cairo_stroke(cr);
    } else if (kind == "SimpleTab") {
        Panel(cr, x, y, w, h, 4, kWindow, kLine);
    }
    // UserItem, UserControl and PictureItem: the add-on draws them; the host shows nothing there.
}

void DrawTitleBar(cairo_t* cr, const Dialog& dialog) {
    cairo_pattern_t* shade = cairo_pattern_create_linear(0, -kTitleBarHeight, 0, 0);
    cairo_pattern_add_color_stop_rgb(shade, 0, kTitleTop.r, kTitleTop.g, kTitleTop.b);
    cairo_pattern_add_color_stop_rgb(shade, 1, kTitleBottom.r, kTitleBottom.g, kTitleBottom.b);
    cairo_rectangle(cr, 0, -kTitleBarHeight, dialog.width, kTitleBarHeight);
    cairo_set_source(cr, shade);
    cairo_fill(cr);
    cairo_pattern_destroy(shade);
    cairo_rectangle(cr, 0, -1, dialog.width, 1);
    SetColor(cr, kEdge);
    cairo_fill(cr);
    if (dialog.kind != DialogKind::Modal) { // a modal dialog is closed by its buttons only
        cairo_arc(cr, 12, -kTitleBarHeight / 2.0, 6, 0, 2 * M_PI);
        SetColor(cr, kCloseBox);
        cairo_fill(cr);
    }
}

// The width and height of a dialog's picture: its client area, the title bar and the border.
void DialogPictureSize(const Dialog& dialog, int* width, int* height) {
    *width = std::max<int>(0, dialog.width) + 2 * kBorder;
    *height = std::max<int>(0, dialog.height) + kTitleBarHeight + 2 * kBorder;
}

// Draws the whole picture onto a surface of DialogPictureSize.
void Draw(cairo_t* cr, const Dialog& dialog, Icons& icons) {
    SetColor(cr, kFrame);
    cairo_paint(cr);
    cairo_translate(cr, kBorder, kBorder + kTitleBarHeight);
    cairo_rectangle(cr, 0, 0, dialog.width, dialog.height);
    SetColor(cr, kWindow);
    cairo_fill(cr);
    DrawTitleBar(cr, dialog);
    PangoContext* context = NewContext();
    DrawText(cr, context, TitleBox(dialog));
    cairo_rectangle(cr, 0, 0, dialog.width, dialog.height);
    cairo_clip(cr);
    for (short n = 1; static_cast<size_t>(n) <= dialog.items.size(); ++n) {
        if (!dialog.items[static_cast<size_t>(n) - 1].visible)
            continue;
        DrawItem(cr, dialog, n, icons);
        for (const TextBox& box : TextBoxes(dialog, n, icons))
            DrawText(cr, context, box);
    }
    g_object_unref(context);
}

cairo_status_t AppendBytes(void* closure, const unsigned char* data, unsigned int length) {
    static_cast<std::string*>(closure)->append(reinterpret_cast<const char*>(data), length);
    return CAIRO_STATUS_SUCCESS;
}

bool WriteFile(const std::string& path, const std::string& bytes, std::string* error) {
    const int fd = open(path.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0644);
    size_t done = 0;
    while (fd >= 0 && done < bytes.size()) {
        const ssize_t n = write(fd, bytes.data() + done, bytes.size() - done);
        if (n < 0 && errno != EINTR)
            break;
        done += n > 0 ? static_cast<size_t>(n) : 0;
    }
    const bool written = fd >= 0 && done == bytes.size();
    const int why = errno;
    if ((fd >= 0 && close(fd) != 0) || !written) {
        *error = "cannot write the picture " + path + ": " + std::strerror(written ? errno : why);
        return false;
    }
    return true;
}

} // namespace

bool WriteDialogPicture(const Dialog& dialog, const ResourceSet& resources, const std::string& path,
                        std::string* error) {
    if (!TheFonts().problem.empty()) {
        *error = TheFonts().problem;
        return false;
    }
    int width = 0, height = 0;
    DialogPictureSize(dialog, &width, &height);
    if (width > kLargestPicture || height > kLargestPicture) {
        *error = "dialog " + std::to_string(dialog.resID) + " is " + std::to_string(dialog.width) + " x " +
                 std::to_string(dialog.height) + " pixels, more than a picture may be (" +
                 std::to_string(kLargestPicture) + " on a side)";
        return false;
    }
    cairo_surface_t* surface = cairo_image_surface_create(CAIRO_FORMAT_ARGB32, width, height);
    cairo_t* cr = cairo_create(surface);
    Icons icons(resources);
    Draw(cr, dialog, icons);
    cairo_destroy(cr);
    std::string png;
    const cairo_status_t status = cairo_surface_write_to_png_stream(surface, AppendBytes, &png);
    cairo_surface_destroy(surface);
    if (status != CAIRO_STATUS_SUCCESS) {
        *error = std::string("cannot make the picture: ") + cairo_status_to_string(status);
        return false;
    }
    return WriteFile(path, png, error);
}

bool FindCutTexts(const Dialog& dialog, const ResourceSet& resources, std::vector<CutText>* cut,
                  std::string* error) {
    if (!TheFonts().problem.empty()) {
        *error = TheFonts().problem;
        return false;
    }
    Icons icons(resources);
    std::vector<TextBox> boxes;
    if (!dialog.title.empty())
        boxes.push_back(TitleBox(dialog));
    for (short n = 1; static_cast<size_t>(n) <= dialog.items.size(); ++n)
        if (dialog.items[static_cast<size_t>(n) - 1].visible)
            for (const TextBox& box : TextBoxes(dialog, n, icons))
                boxes.push_back(box);
    PangoContext* context = NewContext();
    for (const TextBox& box : boxes) {
        if (!box.measured)
            continue;
        Placed placed = Place(context, box);
        const PangoRectangle& ink = placed.inkExtents;
        const double left = placed.dx + ink.x / double(PANGO_SCALE);
        const double top = placed.dy + ink.y / double(PANGO_SCALE);
        const double right = left + ink.width / double(PANGO_SCALE);
        const double bottom = top + ink.height / double(PANGO_SCALE);
        g_object_unref(placed.layout);
        constexpr double kSlack = 1; // less than a pixel of antialiased ink beyond the frame is not seen
        if (left >= -kSlack && top >= -kSlack && right <= box.w + kSlack && bottom <= box.h + kSlack)
            continue;
        CutText text;
        text.item = box.item;
        text.text = box.text;
        text.needWidth = static_cast<int>(std::ceil(right - left));
        text.needHeight = static_cast<int>(std::ceil(bottom - std::min(top, 0.0)));
        text.frameWidth = static_cast<int>(box.w);
        text.frameHeight = static_cast<int>(box.h);
        cut->push_back(text);
    }
    g_object_unref(context);
    return true;
}

} // namespace achost
