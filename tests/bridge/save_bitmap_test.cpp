// Saving device bitmaps: the colours that come back, the tags, what is refused and how it is told.
#include <filesystem>

#include "bridge/save_choices.h"
#include "bridge/saved_pictures.h"
#include "support/stored_tiff.h"

namespace vellim::test {
namespace {

std::string boxes;

int32_t TakeMessage(WindowHandle owner, const char* text, const char* caption, uint32_t style) {
    boxes.append(caption).append(": ").append(text).append(";");
    EXPECT_EQ(owner | style, uint32_t{MB_ICONEXCLAMATION});
    SetTiffError(TIFF_NOT_CALS);  // as a desktop that uses the library itself would
    return IDOK;
}
constexpr DesktopDriver kTakesMessages = {TakeMessage, nullptr, nullptr};

class SaveBitmap : public testing::Test {
  protected:
    SaveBitmap() {
        boxes.clear();
        SetDesktopDriver(&kTakesMessages);
    }
    ~SaveBitmap() override {
        SetDesktopDriver(nullptr);
        SetDisplay(nullptr);
        PutOnClipboard(0);
    }
};

TEST_F(SaveBitmap, EveryCompressionKeepsTheColoursOfEveryDepth) {
    const std::string path = NewPath("saved.tif");
    const CursorHandle cursor = SetCursor(LoadCursorA(0, IDC_ARROW));
    int32_t images = 0;
    for (const int32_t display : {1, 8, 24}) {
        SetDisplayDepth(display);
        const WindowHandle window = display != 1 ? CreateMemoryWindow(9, 9, 0) : 0;
        SetActiveWindow(window);
        for (const uint16_t bits : std::initializer_list<uint16_t>{1, 4, 8, 24}) {
            // A palette's first sixteen are not the sixteen that bitmaps of 4 bits have.
            if (bits == 4 && display == 8) continue;
            const BitmapHandle bitmap = MakeBitmap(61, 40, bits).Release();
            PutOnClipboard(bitmap);
            const std::vector<uint32_t> live = Live();
            const Colors colors = ColorsOfBitmap(bitmap);
            for (uint32_t id = TIFF_SAVE_NONE; id <= TIFF_SAVE_GROUP4; id++) {
                const bool isBilevel = bits == 1 || id >= TIFF_SAVE_CCITT_1D;
                const Colors expected = isBilevel   ? Bilevel(colors)
                                        : bits < 24 ? Shown(colors)
                                                    : colors;
                for (const bool fromClipboard : {false, true}) {
                    ASSERT_EQ(Save(fromClipboard, path, bitmap, id), 1) << id << TiffError();
                    const OwnedBlock dib(LoadTiffIntoDIB(path.c_str(), images++, 0));
                    ASSERT_TRUE(dib) << TiffError();
                    EXPECT_EQ(LockedBlock(dib.Get()).As<BITMAPINFOHEADER>()->biBitCount,
                              isBilevel ? 1 : bits);
                    EXPECT_TRUE(ColorsOf(dib.Get()) == expected)
                        << bits << " bits, id " << id << ", " << fromClipboard << display;
                }
            }
            EXPECT_EQ(Live(), live) << "something was kept";
        }
        DestroyWindow(window);
    }
    EXPECT_EQ(GetNumberOfImagesInTiffFile(path.c_str()), images);
    EXPECT_EQ(SetCursor(cursor), LoadCursorA(0, IDC_ARROW));
    EXPECT_EQ(boxes, "");
}

uint64_t Number(const Directory& image, uint16_t tag) {
    const auto found = image.find(tag);
    return found == image.end() ? 9999 : Element(found->second, 0);
}

TEST_F(SaveBitmap, TagsTellColoursAndResolution) {
    constexpr uint64_t over1 = 1ULL << 32;
    const DisplaySettings display = {200, 100, 24};
    SetDisplay(&display);
    const struct {
        uint16_t bits;
        bool fromClipboard;
        uint32_t id;
        uint64_t compression, depth, photometric, more;  // Predictor or T4Options
        size_t colors = 0;
    } cases[] = {{1, false, TIFF_SAVE_NONE, 1, 1, 0, 9999},
                 {1, true, TIFF_SAVE_PACKBITS, 32773, 1, 3, 9999, 2},
                 {1, true, TIFF_SAVE_GROUP3_2D, 3, 1, 0, 1},
                 {8, false, TIFF_SAVE_LZW, 5, 8, 3, 9999, 256},
                 {8, true, TIFF_SAVE_GROUP3_1D, 3, 1, 0, 9999},
                 {24, true, TIFF_SAVE_LZW_DIFFERENCING, 5, 24, 2, 2},
                 {24, false, TIFF_SAVE_GROUP4, 4, 1, 0, 9999}};
    for (const bool big : {false, true}) {
        const std::string path = big ? FileOf(BuildTiff({}, true), "big.tif") : NewPath("new.tif");
        for (const auto& c : cases) {
            const BitmapHandle bitmap = MakeBitmap(20, 10, c.bits).Release();
            PutOnClipboard(bitmap);
            ASSERT_EQ(Save(c.fromClipboard, path, bitmap, c.id), 1);
            const Bytes file = ReadFile(path);
            EXPECT_EQ(file[0], big ? 'M' : 'I');
            const Directory image = Directories(file).back();
            EXPECT_EQ(Number(image, 258), c.depth);
            EXPECT_EQ(Number(image, 259), c.compression);
            EXPECT_EQ(Number(image, 262), c.photometric);
            EXPECT_EQ(Number(image, 282), 200 + over1);
            EXPECT_EQ(Number(image, 283), 100 + over1);
            EXPECT_EQ(Number(image, c.compression == 3 ? 292 : 317), c.more);
            EXPECT_EQ(image.contains(320) ? image.at(320).count : 0, 3 * c.colors);
            if (c.colors == 2) {
                EXPECT_EQ(image.at(320).value, (Bytes{0, 255, 0, 0, 0, 255, 0, 0, 0, 255, 0, 0}));
            }
        }
        EXPECT_EQ(Directories(ReadFile(path)).size(), std::size(cases));
    }
}

TEST_F(SaveBitmap, RefusesWithTheFileLeftAlone) {
    const OwnedObject mono = MakeBitmap(9, 9, 1), brush(CreateSolidBrush(0));
    const std::string noTiff = FileOf({'G', 'I', 'F'}, "no.tif"), path = NewPath("refused.tif");
    const std::string failed = "TIFF error: Saving has failed.;";
    const OwnedObject wide(CreateBitmap(70000, 1, 1, 1, nullptr));
    const struct {
        const char* what;
        std::string path;
        BitmapHandle bitmap;
        uint32_t id;
        int32_t dialog, code, clipboardCode;
        std::string box = {};  // of a save from the clipboard
    } cases[] = {{"dialog", path, mono.Get(), 201, 1, 1, 1},
                 {"id", path, mono.Get(), 200, 0, 11, 7},
                 {"id", path, mono.Get(), 210, 0, 11, 7},
                 {"no JPEG", path, mono.Get(), 209, 0, 11, 11, failed},
                 {"no TIFF file", noTiff, mono.Get(), 201, 0, 2, 14},
                 {"no path", "", mono.Get(), 201, 0, 2, 6},
                 {"too wide", path, wide.Get(), 201, 0, 1, 1, failed},
                 {"no bitmap", path, brush.Get(), 201, 0, 1, 7},
                 {"no object", path, 12345, 201, 0, 1, 7}};
    for (const auto& c : cases) {
        boxes.clear();
        EXPECT_EQ(SaveBitmapInTiffFormat(c.path.c_str(), c.bitmap, c.id, c.dialog), 0) << c.what;
        EXPECT_EQ(TiffError(), c.code) << c.what;
        EXPECT_EQ(boxes, "") << c.what;
        BITMAP record{};
        const bool isBitmap = GetObjectA(c.bitmap, sizeof record, &record) == sizeof record;
        PutOnClipboard(isBitmap ? CreateBitmap(record.bmWidth, 1, 1, 1, nullptr) : 0);
        SetTiffError(7);
        EXPECT_EQ(SaveTiffFileFromClipboard(c.path.c_str(), c.id, c.dialog), 0) << c.what;
        EXPECT_EQ(TiffError(), c.clipboardCode) << c.what;
        EXPECT_EQ(boxes, c.box) << c.what;
        EXPECT_FALSE(std::filesystem::exists(path)) << c.what;
    }
    EXPECT_EQ(SaveBitmapInTiffFile(nullptr, mono.Get(), 201, 0), 0);
    EXPECT_EQ(ReadText(noTiff), "GIF");
}

// What a dialog may have left, brought into line. A photometric of -1: refused with code 16.
TEST_F(SaveBitmap, ChoicesFitThePicture) {
    const struct {
        SaveSource source;
        bool blackFirst;
        uint16_t bits;
        uint32_t compression;
        int32_t colors;
        uint32_t photometric;
        int32_t fitted;
    } cases[] = {{SaveSource::Bitmap, true, 24, 201, 1 << 24, kWhiteIsZero, -1},
                 {SaveSource::ClipboardBitmap, true, 24, 201, 1 << 24, kPalette, -1},
                 {SaveSource::Bitmap, true, 24, 201, 1 << 24, kRgb, kRgb},
                 {SaveSource::Bitmap, true, 24, 201, 2, kWhiteIsZero, kWhiteIsZero},
                 {SaveSource::Bitmap, true, 8, 201, 256, kWhiteIsZero, kWhiteIsZero},
                 {SaveSource::Bitmap, true, 1, 201, 2, kPalette, kPalette},
                 {SaveSource::ClipboardBitmap, true, 24, 208, 1 << 24, kPalette, kWhiteIsZero},
                 {SaveSource::Dib, true, 24, 201, 1 << 24, kWhiteIsZero, -1},
                 {SaveSource::Dib, true, 24, 201, 1 << 24, kPalette, kRgb},
                 {SaveSource::Dib, true, 8, 205, 256, kPalette, -1},
                 {SaveSource::Dib, false, 8, 201, 256, kWhiteIsZero, kWhiteIsZero},
                 {SaveSource::Dib, true, 1, 201, 2, kPalette, kBlackIsZero},
                 {SaveSource::Dib, false, 1, 208, 2, kPalette, kWhiteIsZero}};
    for (const auto& c : cases) {
        const OwnedBlock dib = MakeDib(8, 1, c.bits, c.blackFirst);
        const LockedBlock block(dib.Get());
        SavedPicture picture{.source = c.source};
        if (c.source == SaveSource::Dib) picture.header = block.As<BITMAPINFOHEADER>();
        picture.record.bmPlanes = 1, picture.record.bmBitsPixel = c.bits;
        ThreadSaveChoices().ColorCount = c.colors;
        ThreadSaveChoices().PhotometricChoice = c.photometric;
        SetTiffError(TIFF_SUCCESS);
        const bool fits = FitChoices(picture, c.compression);
        EXPECT_EQ(TiffError(), fits ? TIFF_SUCCESS : TIFF_BAD_COLOR_FORMAT);
        const auto fitted = static_cast<int32_t>(ThreadSaveChoices().PhotometricChoice);
        EXPECT_EQ(fits ? fitted : -1, c.fitted) << c.bits << " bits as " << c.photometric;
    }
}

TEST_F(SaveBitmap, TheClipboardIsLeftAsItWas) {
    const Bytes endsEarly = {0xE0, 0x02, 0x00, 0x20};  // V0 three times, EOFB
    const std::string path = NewPath("board.tif");
    const std::string broken =
        FileOf(BuildTiff({SimpleImage(8, 9, 1, 1, 4, 1, 9, {endsEarly})}), "broken.tif");
    const OwnedObject mono = MakeBitmap(9, 9, 1);
    ASSERT_EQ(SaveBitmapInTiffFile(path.c_str(), mono.Get(), TIFF_SAVE_NONE, 0), 1);
    EXPECT_EQ(SaveTiffFileFromClipboard(path.c_str(), TIFF_SAVE_NONE, 0), 0) << "holds no bitmap";
    EXPECT_EQ(LoadTiffFileIntoClipboard(path.c_str(), 0, 0), 1) << TiffError();
    const auto held = [] {
        OpenClipboard(0);
        const BitmapHandle bitmap = GetClipboardData(CF_BITMAP);
        CloseClipboard();
        return bitmap;
    };
    const BitmapHandle bitmap = held();
    EXPECT_EQ(ColorsOfBitmap(bitmap), ColorsOfBitmap(mono.Get()));
    const std::vector<uint32_t> live = Live();
    EXPECT_EQ(LoadTiffFileIntoClipboard(path.c_str(), 1, 0), 0);
    EXPECT_EQ(TiffError(), TIFF_BAD_INDEX);
    EXPECT_EQ(LoadTiffFileIntoClipboard(path.c_str(), 0, 1), 0) << "no dialog can be run";
    EXPECT_EQ(TiffError(), TIFF_NO_MEMORY);
    EXPECT_EQ(LoadTiffFileIntoClipboard(broken.c_str(), 0, 0), 0) << "gives no bitmap";
    const WindowHandle another = CreateMemoryWindow(9, 9, 0);
    ASSERT_EQ(OpenClipboard(another), 1);
    EXPECT_EQ(LoadTiffFileIntoClipboard(path.c_str(), 0, 0), 0) << "open for another";
    SetTiffError(7);
    EXPECT_EQ(SaveTiffFileFromClipboard(path.c_str(), TIFF_SAVE_NONE, 0), 0);
    EXPECT_EQ(TiffError(), 7);
    CloseClipboard();
    DestroyWindow(another);
    EXPECT_EQ(boxes, "VELL KIT: Could not open clipboard;");
    EXPECT_EQ(held(), bitmap);
    EXPECT_EQ(Live(), live) << "something was kept";
}

// Of a bitmap, all that a line may be changed by: its row and what fills its last word.
TEST_F(SaveBitmap, LineFunctionsKeepToTheRow) {
    const ScopedContext display(ScopedContext::Kind::Display);
    for (const uint16_t bits : std::initializer_list<uint16_t>{1, 8, 24}) {
        const OwnedObject bitmap = MakeBitmap(9, 3, bits);
        const OwnedBlock description = MakeDib(9, 3, bits);
        const LockedBlock block(description.Get());
        SaveLineContext good{};
        good.DeviceContext = display.Get(), good.Bitmap = bitmap.Get();
        good.Header = block.As<BITMAPINFOHEADER>();
        SaveLineContext stale = good, foreign = good, headless = good;
        stale.Bitmap = 12345, foreign.DeviceContext = bitmap.Get(), headless.Header = nullptr;
        const uint32_t row = (9U * bits + 15) / 16 * 2;
        for (const LineCallback fill : {DllFillTiffLine, DllFillMonoTiffLine, DllFillCcittLine}) {
            const auto filled = [&](const SaveLineContext& context, uint32_t number) {
                Bytes line(64, 0xA5);
                EXPECT_EQ(fill(line.data(), number, reinterpret_cast<uintptr_t>(&context)), 0U);
                return line;
            };
            const Bytes untouched(64, 0xA5), line = filled(good, 2);
            EXPECT_NE(line, untouched);
            EXPECT_EQ(Bytes(line.begin() + row, line.end()), Bytes(64 - row, 0xA5)) << bits;
            EXPECT_EQ(filled(good, 3), untouched);
            EXPECT_EQ(filled(good, 0xFFFFFFFF), untouched);
            EXPECT_EQ(filled(stale, 0), untouched);
            EXPECT_EQ(filled(foreign, 0), untouched);
            EXPECT_EQ(filled(headless, 0) == untouched, fill != DllFillCcittLine);
            Bytes nothing(4);
            EXPECT_EQ(fill(nothing.data(), 0, 0), 0U);
            EXPECT_EQ(fill(nullptr, 0, reinterpret_cast<uintptr_t>(&good)), 0U);
        }
    }
}

TEST_F(SaveBitmap, BareFilesAreWrittenWholeOrNotAtAll) {
    const OwnedObject bitmap = MakeBitmap(61, 40, 24), brush(CreateSolidBrush(0));
    const std::string path = NewPath("bare.g4"), folder = NewFolder("folder");
    const struct {
        const std::string& path;
        GraphicsHandle bitmap;
        uint32_t mode;
        int32_t code;
        bool isTold;
    } cases[] = {{path, bitmap.Get(), 4, TIFF_UNKNOWN_COMPRESSION, false},
                 {path, bitmap.Get(), 10, TIFF_UNKNOWN_COMPRESSION, false},
                 {path, brush.Get(), 8, TIFF_NO_MEMORY, true},
                 {folder, bitmap.Get(), 8, TIFF_IO_ERROR, true},
                 {path, bitmap.Get(), 8, TIFF_SUCCESS, false}};
    for (const bool exists : {false, true}) {
        std::filesystem::remove(path);
        if (exists) FileOf(Bytes(5000, 'o'), "bare.g4");
        const std::vector<std::string> names = Names(NewFolder("folder") / "..");
        for (const auto& c : cases) {
            boxes.clear();
            const int32_t result = SaveBitmapInCcittFile(c.path.c_str(), c.bitmap, c.mode);
            EXPECT_EQ(result, c.code == TIFF_SUCCESS ? 1 : 0) << c.mode;
            EXPECT_EQ(TiffError(), c.code);
            EXPECT_EQ(boxes, c.isTold ? "TIFF error: Saving has failed.;" : "");
            if (result == 1) break;
            EXPECT_EQ(Names(folder + "/.."), names);
            EXPECT_EQ(ReadFile(path), Bytes(exists ? 5000 : 0, 'o'));
        }
        EXPECT_LT(std::filesystem::file_size(path), 5000U);
        EXPECT_FALSE(std::filesystem::exists(path + ".~~~"));
    }
    EXPECT_EQ(SaveBitmapInCcittFile("/dev/full", bitmap.Get(), CCITT_FILE_GROUP4), 0);
    EXPECT_EQ(TiffError(), TIFF_IO_ERROR);
    EXPECT_EQ(SaveBitmapInCcittFile(nullptr, bitmap.Get(), CCITT_FILE_GROUP4), 0);
}

}  // namespace
}  // namespace vellim::test
