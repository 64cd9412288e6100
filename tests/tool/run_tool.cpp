#include "run_tool.h"

#include <gtest/gtest.h>
#include <png.h>
#include <sys/wait.h>

#include <cstdlib>
#include <memory>

namespace vellim::test {
namespace {

constexpr const char* kTool = VELLIM_BINARY_DIR "/bin/vellim";

using PngFile = std::unique_ptr<FILE, int (*)(FILE*)>;

[[noreturn]] void OnPngError(png_structp /*png*/, png_const_charp message) {
    throw std::runtime_error(message);
}

}  // namespace

ToolRun RunTool(const std::string& arguments, const Bytes& input) {
    const std::string in = FileOf(input, "stdin");
    const std::string out = NewPath("stdout");
    const std::string err = NewPath("stderr");
    const std::string command =
        std::string(kTool) + " " + arguments + " <" + in + " >" + out + " 2>" + err;
    const int status = std::system(command.c_str());
    return {WIFEXITED(status) ? WEXITSTATUS(status) : -1, ReadText(out), ReadText(err)};
}

ToolRun ExpectTool(const std::string& arguments, int exitCode, const std::string& words,
                   const Bytes& input) {
    ToolRun run = RunTool(arguments, input);
    const bool isReport = arguments.starts_with("info") || arguments.starts_with("check");
    const std::string& told = isReport ? run.out : run.err;
    EXPECT_EQ(run.exitCode, exitCode) << arguments << "\n" << run.err;
    EXPECT_NE(told.find(words), std::string::npos) << arguments << ": " << words << "\n" << told;
    return run;
}

std::string Sample(const std::string& name) {
    return std::string(VELLIM_SOURCE_DIR "/samples/") + name;
}

Png ReadPng(const std::string& path) {
    Png picture;
    const PngFile file(std::fopen(path.c_str(), "rb"), &std::fclose);
    if (!file) {
        ADD_FAILURE() << path << " is not there";
        return picture;
    }
    png_structp png = png_create_read_struct(PNG_LIBPNG_VER_STRING, nullptr, OnPngError, nullptr);
    png_infop info = png_create_info_struct(png);
    png_init_io(png, file.get());
    try {
        png_read_info(png, info);
        picture.width = png_get_image_width(png, info);
        picture.height = png_get_image_height(png, info);
        picture.depth = png_get_bit_depth(png, info);
        picture.colourType = png_get_color_type(png, info);
        png_get_pHYs(png, info, &picture.pelsX, &picture.pelsY, &picture.unit);
        png_colorp palette = nullptr;
        int colours = 0;
        png_get_PLTE(png, info, &palette, &colours);
        for (int i = 0; i < colours; ++i) {
            picture.palette.insert(picture.palette.end(),
                                   {palette[i].red, palette[i].green, palette[i].blue});
        }
        picture.rows.assign(picture.height, Bytes(png_get_rowbytes(png, info)));
        for (Bytes& row : picture.rows)
            png_read_row(png, row.data(), nullptr);
        png_read_end(png, nullptr);
    } catch (const std::runtime_error& error) {
        ADD_FAILURE() << path << ": " << error.what();
    }
    png_destroy_read_struct(&png, &info, nullptr);
    return picture;
}

Bytes PnmPixels(const std::string& pnm, int fields) {
    auto at = pnm.begin();
    for (; fields > 0 && at != pnm.end(); ++at) {
        if (*at == ' ' || *at == '\n') --fields;
    }
    return {at, pnm.end()};
}

ImageSpec WithDots(ImageSpec image, uint32_t x, uint32_t y) {
    return With(std::move(image), {RationalTag(282, x, 1), RationalTag(283, y, 1)});
}

ImageSpec Tiled(ImageSpec image) {
    image.strips.clear();
    return With(std::move(image),
                {LongTag(322, {16}), LongTag(323, {16}), LongTag(324, {16}), LongTag(325, {16})});
}

Bytes BrokenChain(const ImageSpec& image) {
    Bytes file = BuildTiff({image, image});
    file[LinksOf(file)[0] + 2] = 0x70;
    return file;
}

}  // namespace vellim::test
