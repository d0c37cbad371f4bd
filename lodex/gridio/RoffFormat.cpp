#include <lodex/gridio/RoffFormat.h>

#include <lodex/gridio/RoffReader.h>
#include <lodex/gridio/RoffWriter.h>

#include <array>

namespace lodex {

namespace {

const GridFormatRegistrar<RoffFormat> binary_registrar;
const GridFormatRegistrar<RoffBigEndianFormat> big_endian_registrar;
const GridFormatRegistrar<RoffTextFormat> text_registrar;

constexpr std::array<std::string_view, 2> binary_endings = {".roff", ".roffbin"};
constexpr std::array<std::string_view, 2> text_endings = {".roffasc", ".roff_asc"};

} // namespace

std::span<const std::string_view> RoffFormat::endings() const
{
    return binary_endings;
}

bool RoffFormat::recognises(std::string_view head, const std::filesystem::path&) const
{
    return head.starts_with("roff-bin");
}

ReadResult RoffFormat::read(const std::filesystem::path& path, const ReadOptions& options) const
{
    return roff::read_file(path, options);
}

WriteResult RoffFormat::write(const GridModel& model, const std::filesystem::path& path,
                              const WriteOptions& options) const
{
    return roff::write_file(model, path, options, roff::Form::LittleEndian);
}

WriteResult RoffBigEndianFormat::write(const GridModel& model, const std::filesystem::path& path,
                                       const WriteOptions& options) const
{
    return roff::write_file(model, path, options, roff::Form::BigEndian);
}

std::span<const std::string_view> RoffTextFormat::endings() const
{
    return text_endings;
}

bool RoffTextFormat::recognises(std::string_view head, const std::filesystem::path&) const
{
    return head.starts_with("roff-asc");
}

WriteResult RoffTextFormat::write(const GridModel& model, const std::filesystem::path& path,
                                  const WriteOptions& options) const
{
    return roff::write_file(model, path, options, roff::Form::Text);
}

} // namespace lodex
