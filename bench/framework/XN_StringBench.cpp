// XN_String conversions against bare ICU on the same 1 MiB text: building a string from UTF-8, and
// ToCStr to UTF-8 and to Windows-1252. Both sides produce a fresh owned result each time: bare ICU
// allocates a buffer of the largest possible size and converts once; XN_String gives an exactly
// sized one. Target: XN_String within 1.5x of bare ICU.
#include "XN_String.hpp"

#include <benchmark/benchmark.h>
#include <unicode/ucnv.h>

#include <memory>
#include <string>

namespace {

// About 1 MiB of mostly Latin text with accents, symbols, ideographs and an emoji now and then.
const std::string& Utf8Text() {
    static const std::string text = [] {
        const std::string line = "Le café coûte 3 € — Größe ™ naïve; 中文 text, 😀 and plain ASCII words.\n";
        std::string all;
        while (all.size() + line.size() <= (1u << 20))
            all += line;
        return all;
    }();
    return text;
}

const XN_String& Text() {
    static const XN_String text(Utf8Text().data(), static_cast<unsigned int>(Utf8Text().size()),
                                XN_String::Encoding_UTF8);
    return text;
}

UConverter* OpenConverter(const char* name) {
    UErrorCode err = U_ZERO_ERROR;
    UConverter* converter = ucnv_open(name, &err);
    static const UChar kQuestionMark[] = {u'?'};
    ucnv_setSubstString(converter, kQuestionMark, 1, &err);
    return converter;
}

void XN_String_FromUtf8(benchmark::State& state) {
    const std::string& bytes = Utf8Text();
    for (auto _ : state) {
        XN_String s(bytes.data(), static_cast<unsigned int>(bytes.size()), XN_String::Encoding_UTF8);
        benchmark::DoNotOptimize(s.GetBuffer());
    }
    state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * bytes.size()));
}

void Icu_FromUtf8(benchmark::State& state) {
    const std::string& bytes = Utf8Text();
    UConverter* converter = OpenConverter("UTF-8");
    for (auto _ : state) {
        std::unique_ptr<UChar[]> units(new UChar[bytes.size() + 1]);
        UErrorCode err = U_ZERO_ERROR;
        int32_t n = ucnv_toUChars(converter, units.get(), static_cast<int32_t>(bytes.size() + 1),
                                  bytes.data(), static_cast<int32_t>(bytes.size()), &err);
        benchmark::DoNotOptimize(n);
        benchmark::DoNotOptimize(units.get());
    }
    ucnv_close(converter);
    state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * bytes.size()));
}

void XN_String_ToCStr(benchmark::State& state, XN_String::Encoding encoding) {
    const XN_String& text = Text();
    for (auto _ : state) {
        XN_CString bytes = text.ToCStr(encoding);
        benchmark::DoNotOptimize(bytes.Get());
    }
    state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * Utf8Text().size()));
}

void Icu_FromUChars(benchmark::State& state, const char* converterName) {
    const XN_String& text = Text();
    UConverter* converter = OpenConverter(converterName);
    const std::size_t room = UCNV_GET_MAX_BYTES_FOR_STRING(text.GetLength(), ucnv_getMaxCharSize(converter));
    for (auto _ : state) {
        std::unique_ptr<char[]> bytes(new char[room]);
        UErrorCode err = U_ZERO_ERROR;
        int32_t n = ucnv_fromUChars(converter, bytes.get(), static_cast<int32_t>(room),
                                    reinterpret_cast<const UChar*>(text.GetBuffer()),
                                    static_cast<int32_t>(text.GetLength()), &err);
        benchmark::DoNotOptimize(n);
        benchmark::DoNotOptimize(bytes.get());
    }
    ucnv_close(converter);
    state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * Utf8Text().size()));
}

} // namespace

BENCHMARK(XN_String_FromUtf8)->Unit(benchmark::kMicrosecond);
BENCHMARK(Icu_FromUtf8)->Unit(benchmark::kMicrosecond);
BENCHMARK_CAPTURE(XN_String_ToCStr, Utf8, XN_String::Encoding_UTF8)->Unit(benchmark::kMicrosecond);
BENCHMARK_CAPTURE(Icu_FromUChars, Utf8, "UTF-8")->Unit(benchmark::kMicrosecond);
BENCHMARK_CAPTURE(XN_String_ToCStr, Windows1252, XN_String::Encoding_WindowsLatin1)
    ->Unit(benchmark::kMicrosecond);
BENCHMARK_CAPTURE(Icu_FromUChars, Windows1252, "windows-1252")->Unit(benchmark::kMicrosecond);
