// pdf_from_text: typesets a documentation text as a PDF file (A4 pages, cairo's PDF surface, pango
// for the text). Used at build time for the add-on's documentation.
//
//   pdf_from_text INPUT.txt OUTPUT.pdf
//
// The text is UTF-8. Its first line is the document's title; a line starting with "# " is a heading;
// paragraphs are separated by empty lines, and the lines of a paragraph are joined with spaces.
#include <cairo-pdf.h>
#include <pango/pangocairo.h>

#include <fstream>
#include <iostream>
#include <string>
#include <vector>

namespace {

constexpr double kPageWidth = 595.0, kPageHeight = 842.0, kMargin = 64.0; // points
constexpr double kParagraphGap = 10.0;

struct Block {
    std::string font; // pango font description
    std::string text;
};

// The title, then the headings and paragraphs in order.
std::vector<Block> ReadBlocks(std::istream& in) {
    std::vector<Block> blocks;
    std::string line, paragraph;
    auto flush = [&] {
        if (!paragraph.empty())
            blocks.push_back({"DejaVu Serif 11", paragraph});
        paragraph.clear();
    };
    if (std::getline(in, line))
        blocks.push_back({"DejaVu Sans Bold 20", line});
    while (std::getline(in, line)) {
        if (line.empty()) {
            flush();
        } else if (line.compare(0, 2, "# ") == 0) {
            flush();
            blocks.push_back({"DejaVu Sans Bold 13", line.substr(2)});
        } else {
            paragraph += (paragraph.empty() ? "" : " ") + line;
        }
    }
    flush();
    return blocks;
}

} // namespace

int main(int argc, char** argv) {
    if (argc != 3) {
        std::cerr << "usage: pdf_from_text INPUT.txt OUTPUT.pdf\n";
        return 2;
    }
    std::ifstream in(argv[1]);
    if (!in) {
        std::cerr << "pdf_from_text: cannot read " << argv[1] << "\n";
        return 1;
    }
    const std::vector<Block> blocks = ReadBlocks(in);
    cairo_surface_t* surface = cairo_pdf_surface_create(argv[2], kPageWidth, kPageHeight);
    cairo_t* cr = cairo_create(surface);
    if (!blocks.empty())
        cairo_pdf_surface_set_metadata(surface, CAIRO_PDF_METADATA_TITLE, blocks.front().text.c_str());
    PangoLayout* layout = pango_cairo_create_layout(cr);
    pango_layout_set_width(layout, static_cast<int>((kPageWidth - 2 * kMargin) * PANGO_SCALE));
    pango_layout_set_wrap(layout, PANGO_WRAP_WORD_CHAR);
    double y = kMargin;
    for (const Block& block : blocks) {
        PangoFontDescription* font = pango_font_description_from_string(block.font.c_str());
        pango_layout_set_font_description(layout, font);
        pango_font_description_free(font);
        pango_layout_set_text(layout, block.text.c_str(), -1);
        int width = 0, height = 0;
        pango_layout_get_size(layout, &width, &height);
        const double blockHeight = static_cast<double>(height) / PANGO_SCALE;
        if (y + blockHeight > kPageHeight - kMargin && y > kMargin) {
            cairo_show_page(cr);
            y = kMargin;
        }
        cairo_move_to(cr, kMargin, y);
        pango_cairo_show_layout(cr, layout);
        y += blockHeight + kParagraphGap;
    }
    g_object_unref(layout);
    cairo_destroy(cr);
    cairo_surface_finish(surface);
    const cairo_status_t status = cairo_surface_status(surface);
    cairo_surface_destroy(surface);
    if (status != CAIRO_STATUS_SUCCESS) {
        std::cerr << "pdf_from_text: cannot write " << argv[2] << ": " << cairo_status_to_string(status)
                  << "\n";
        return 1;
    }
    return 0;
}
