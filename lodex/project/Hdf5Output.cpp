#include "Hdf5Output.h"

#include "lodex/utils/FileError.h"

#include <hdf5.h>

#include <algorithm>
#include <cstring>
#include <optional>
#include <utility>

namespace lodex {

namespace {

/// An HDF5 identifier with the function that gives it back.
class Handle {
public:
    using Close = herr_t (*)(hid_t);
    Handle() = default;
    Handle(hid_t id, Close close) : id_(id), close_(close) {}
    Handle(Handle&& other) noexcept : id_(std::exchange(other.id_, -1)), close_(other.close_) {}
    Handle& operator=(Handle&& other) noexcept
    {
        reset();
        id_ = std::exchange(other.id_, -1);
        close_ = other.close_;
        return *this;
    }
    ~Handle() { reset(); }
    /// False when the library could not bring everything into the file.
    bool reset() { return id_ < 0 || close_(std::exchange(id_, -1)) >= 0; }
    [[nodiscard]] hid_t id() const { return id_; }
    [[nodiscard]] bool valid() const { return id_ >= 0; }

private:
    hid_t id_ = -1;
    Close close_ = nullptr;
};

/// What the driver below writes to.
struct Sink {
    explicit Sink(std::filesystem::path target) : file(std::move(target)) {}

    AtomicFile file;
    haddr_t size = 0;          ///< bytes that have been written, counted from the start of the file
    std::exception_ptr failure; ///< the first one; nothing is written from then on
    const void* watched = nullptr;     ///< bytes whose place in the file is wanted
    std::optional<haddr_t> found;      ///< where they went
};

/// The file as the HDF5 library sees it: its own base class comes first.
struct OpenFile {
    H5FD_t base;
    Sink* sink;
    haddr_t end_of_address;
};

OpenFile* as_open(H5FD_t* file)
{
    return reinterpret_cast<OpenFile*>(file);
}

const OpenFile* as_open(const H5FD_t* file)
{
    return reinterpret_cast<const OpenFile*>(file);
}

H5FD_t* open_sink(const char*, unsigned, hid_t access, haddr_t)
{
    const void* info = H5Pget_driver_info(access);
    if (!info)
        return nullptr;
    auto file = std::make_unique<OpenFile>();
    std::memcpy(&file->sink, info, sizeof file->sink);
    return &file.release()->base;
}

herr_t close_sink(H5FD_t* file)
{
    std::unique_ptr<OpenFile>(as_open(file)).reset();
    return 0;
}

herr_t query_sink(const H5FD_t*, unsigned long* flags)
{
    *flags = H5FD_FEAT_AGGREGATE_METADATA | H5FD_FEAT_ACCUMULATE_METADATA; // values come here straight from the caller
    return 0;
}

haddr_t end_of_addresses(const H5FD_t* file, H5FD_mem_t)
{
    return as_open(file)->end_of_address;
}

herr_t set_end_of_addresses(H5FD_t* file, H5FD_mem_t, haddr_t address)
{
    as_open(file)->end_of_address = address;
    return 0;
}

haddr_t end_of_file(const H5FD_t* file, H5FD_mem_t)
{
    return as_open(file)->sink->size;
}

herr_t write_sink(H5FD_t* file, H5FD_mem_t, hid_t, haddr_t address, std::size_t size, const void* bytes)
{
    Sink& sink = *as_open(file)->sink;
    if (!sink.failure) {
        try {
            sink.file.write_at(address, {static_cast<const char*>(bytes), size});
        } catch (...) {
            sink.failure = std::current_exception();
        }
    }
    sink.size = std::max(sink.size, address + size);
    if (bytes == sink.watched)
        sink.found = address;
    return 0;
}

herr_t read_sink(H5FD_t* file, H5FD_mem_t, hid_t, haddr_t address, std::size_t size, void* bytes)
{
    Sink& sink = *as_open(file)->sink;
    std::size_t done = 0;
    if (!sink.failure) {
        try {
            done = sink.file.read_at(address, static_cast<char*>(bytes), size);
        } catch (...) {
            sink.failure = std::current_exception();
        }
    }
    std::memset(static_cast<char*>(bytes) + done, 0, size - done);
    return 0;
}

/// The library asks for the size that it has given out to be the size of the file.
herr_t truncate_sink(H5FD_t* file, hid_t transfer, hbool_t)
{
    const OpenFile* open = as_open(file);
    constexpr char zero = 0;
    if (open->sink->size < open->end_of_address)
        return write_sink(file, H5FD_MEM_DEFAULT, transfer, open->end_of_address - 1, 1, &zero);
    return 0;
}

/// Registered once; the library gives it back when the program ends.
hid_t driver()
{
    static const hid_t id = [] {
        H5FD_class_t driver_class{};
#ifdef H5FD_CLASS_VERSION // libraries from 1.14 on
        driver_class.version = H5FD_CLASS_VERSION;
        driver_class.value = static_cast<H5FD_class_value_t>(511);
#endif
        driver_class.name = "lodex_atomic_file";
        driver_class.maxaddr = (haddr_t{1} << 62) - 1;
        driver_class.fc_degree = H5F_CLOSE_STRONG;
        driver_class.fapl_size = sizeof(Sink*);
        driver_class.open = open_sink;
        driver_class.close = close_sink;
        driver_class.query = query_sink;
        driver_class.get_eoa = end_of_addresses;
        driver_class.set_eoa = set_end_of_addresses;
        driver_class.get_eof = end_of_file;
        driver_class.read = read_sink;
        driver_class.write = write_sink;
        driver_class.truncate = truncate_sink;
        constexpr H5FD_mem_t map[] = H5FD_FLMAP_DICHOTOMY;
        std::ranges::copy(map, driver_class.fl_map);
        return H5FDregister(&driver_class);
    }();
    return id;
}

hid_t file_type(NumberType type)
{
    switch (type) {
    case NumberType::Float32:
        return H5T_IEEE_F32LE;
    case NumberType::Float64:
        return H5T_IEEE_F64LE;
    case NumberType::Int32:
        return H5T_STD_I32LE;
    case NumberType::Int64:
        return H5T_STD_I64LE;
    case NumberType::UInt8:
        break;
    }
    return H5T_STD_U8LE;
}

/// The innermost thing that the library found wrong.
std::string last_library_message()
{
    std::string text;
    H5Ewalk2(
        H5E_DEFAULT, H5E_WALK_UPWARD,
        [](unsigned n, const H5E_error2_t* error, void* data) -> herr_t {
            if (n == 0 && error->desc)
                *static_cast<std::string*>(data) = error->desc;
            return 0;
        },
        &text);
    H5Eclear2(H5E_DEFAULT);
    return text;
}

} // namespace

struct Hdf5Output::Impl {
    std::string name; ///< for messages
    Sink sink;
    Handle file;
    Handle array;
    std::uint64_t chunk = 0;
    unsigned all_filters = 0; ///< mask of the filters that a plain chunk leaves out

    H5E_auto2_t printer = nullptr; ///< what the library did with its messages before
    void* printer_data = nullptr;

    explicit Impl(std::filesystem::path target) : name(target.string()), sink(std::move(target))
    {
        H5Eget_auto2(H5E_DEFAULT, &printer, &printer_data);
        H5Eset_auto2(H5E_DEFAULT, nullptr, nullptr);
    }
    ~Impl()
    {
        array.reset();
        file.reset();
        H5Eclear2(H5E_DEFAULT);
        H5Eset_auto2(H5E_DEFAULT, printer, printer_data);
    }
    Impl(const Impl&) = delete;
    Impl& operator=(const Impl&) = delete;

    /// Throws what has gone wrong so far.
    void check(bool good, const char* what)
    {
        if (sink.failure) {
            H5Eclear2(H5E_DEFAULT);
            std::rethrow_exception(sink.failure);
        }
        if (!good)
            throw FileError(name, 0, std::string("cannot be written: ") + what + ": " + last_library_message());
    }
    Handle checked(hid_t id, Handle::Close close, const char* what)
    {
        Handle handle(id, close);
        check(handle.valid(), what);
        return handle;
    }
    /// Where the bytes went that f wrote.
    template <class F> std::uint64_t place_of(std::span<const std::byte> bytes, const char* what, F f)
    {
        sink.watched = bytes.data();
        sink.found.reset();
        const bool good = f();
        sink.watched = nullptr;
        check(good && sink.found, what);
        return *sink.found;
    }
    Handle group_making_links()
    {
        Handle links = checked(H5Pcreate(H5P_LINK_CREATE), H5Pclose, "link properties");
        check(H5Pset_create_intermediate_group(links.id(), 1) >= 0, "link properties");
        return links;
    }
};

Hdf5Output::Hdf5Output(std::filesystem::path target) : impl_(std::make_unique<Impl>(std::move(target)))
{
    Impl& me = *impl_;
    me.check(driver() >= 0, "driver");
    const Handle access = me.checked(H5Pcreate(H5P_FILE_ACCESS), H5Pclose, "access properties");
    const Sink* sink = &me.sink;
    me.check(H5Pset_driver(access.id(), driver(), static_cast<const void*>(&sink)) >= 0, "access properties");
    // The structure of the file stays in memory until the end: it is small, and nothing has to be read back.
    H5AC_cache_config_t cache{};
    cache.version = H5AC__CURR_CACHE_CONFIG_VERSION;
    me.check(H5Pget_mdc_config(access.id(), &cache) >= 0, "access properties");
    cache.evictions_enabled = false;
    cache.incr_mode = H5C_incr__off;
    cache.flash_incr_mode = H5C_flash_incr__off;
    cache.decr_mode = H5C_decr__off;
    me.check(H5Pset_mdc_config(access.id(), &cache) >= 0, "access properties");
    const Handle creation = me.checked(H5Pcreate(H5P_FILE_CREATE), H5Pclose, "creation properties");
    me.check(H5Pset_userblock(creation.id(), user_block_bytes) >= 0, "creation properties");
    me.file = me.checked(H5Fcreate(me.name.c_str(), H5F_ACC_TRUNC, creation.id(), access.id()), H5Fclose, "file");
    me.check(true, "file");
}

Hdf5Output::~Hdf5Output() = default;

void Hdf5Output::create_group(const std::string& path)
{
    const Handle links = impl_->group_making_links();
    const Handle creation = impl_->checked(H5Pcreate(H5P_GROUP_CREATE), H5Pclose, "group properties");
    const Handle group = impl_->checked(
        H5Gcreate2(impl_->file.id(), path.c_str(), links.id(), creation.id(), H5P_DEFAULT), H5Gclose, "group");
}

void Hdf5Output::set_attribute(const std::string& path, const std::string& name, const std::string& text)
{
    Impl& me = *impl_;
    const Handle object = me.checked(H5Oopen(me.file.id(), path.c_str(), H5P_DEFAULT), H5Oclose, "attribute");
    const Handle type = me.checked(H5Tcopy(H5T_C_S1), H5Tclose, "attribute");
    me.check(H5Tset_size(type.id(), text.size() + 1) >= 0 && H5Tset_cset(type.id(), H5T_CSET_UTF8) >= 0, "attribute");
    const Handle space = me.checked(H5Screate(H5S_SCALAR), H5Sclose, "attribute");
    const Handle attribute = me.checked(
        H5Acreate2(object.id(), name.c_str(), type.id(), space.id(), H5P_DEFAULT, H5P_DEFAULT), H5Aclose, "attribute");
    me.check(H5Awrite(attribute.id(), type.id(), text.c_str()) >= 0, "attribute");
}

void Hdf5Output::set_attribute(const std::string& path, const std::string& name, std::span<const std::int64_t> numbers)
{
    Impl& me = *impl_;
    const Handle object = me.checked(H5Oopen(me.file.id(), path.c_str(), H5P_DEFAULT), H5Oclose, "attribute");
    const hsize_t size = numbers.size();
    const Handle space = me.checked(H5Screate_simple(1, &size, nullptr), H5Sclose, "attribute");
    const Handle attribute =
        me.checked(H5Acreate2(object.id(), name.c_str(), H5T_STD_I64LE, space.id(), H5P_DEFAULT, H5P_DEFAULT), H5Aclose,
                   "attribute");
    me.check(H5Awrite(attribute.id(), H5T_NATIVE_INT64, numbers.data()) >= 0, "attribute");
}

void Hdf5Output::begin_array(const std::string& path, NumberType type, std::uint64_t count, std::uint64_t chunk)
{
    Impl& me = *impl_;
    const Handle creation = me.checked(H5Pcreate(H5P_DATASET_CREATE), H5Pclose, "array properties");
    const hsize_t size = count, part = chunk;
    bool good = H5Pset_chunk(creation.id(), 1, &part) >= 0 && H5Pset_obj_track_times(creation.id(), false) >= 0 &&
                H5Pset_fill_time(creation.id(), H5D_FILL_TIME_NEVER) >= 0;
    me.all_filters = 1;
    if (bytes_of(type) > 1) {
        good = good && H5Pset_shuffle(creation.id()) >= 0;
        me.all_filters = 3;
    }
    me.check(good && H5Pset_deflate(creation.id(), 1) >= 0, "array properties");
    const Handle links = me.group_making_links();
    const Handle space = me.checked(H5Screate_simple(1, &size, nullptr), H5Sclose, "array");
    me.array = me.checked(H5Dcreate2(me.file.id(), path.c_str(), file_type(type), space.id(), links.id(), creation.id(),
                                     H5P_DEFAULT),
                          H5Dclose, "array");
    me.chunk = chunk;
}

std::uint64_t Hdf5Output::write_chunk(std::uint64_t index, std::span<const std::byte> bytes, bool plain)
{
    const hsize_t offset = index * impl_->chunk;
    return impl_->place_of(bytes, "part of an array", [&] {
        return H5Dwrite_chunk(impl_->array.id(), H5P_DEFAULT, plain ? impl_->all_filters : 0, &offset, bytes.size(),
                              bytes.data()) >= 0;
    });
}

void Hdf5Output::end_array()
{
    impl_->check(impl_->array.reset(), "array");
}

std::uint64_t Hdf5Output::write_bytes(const std::string& path, std::span<const std::byte> bytes)
{
    Impl& me = *impl_;
    const hsize_t size = bytes.size();
    const Handle creation = me.checked(H5Pcreate(H5P_DATASET_CREATE), H5Pclose, "array properties");
    me.check(H5Pset_obj_track_times(creation.id(), false) >= 0, "array properties");
    const Handle space = me.checked(H5Screate_simple(1, &size, nullptr), H5Sclose, "array");
    const hid_t id = H5Dcreate2(me.file.id(), path.c_str(), H5T_STD_U8LE, space.id(), H5P_DEFAULT, creation.id(),
                                H5P_DEFAULT);
    Handle array = me.checked(id, H5Dclose, "array");
    const std::uint64_t place = me.place_of(bytes, "array", [&] {
        return H5Dwrite(array.id(), H5T_STD_U8LE, H5S_ALL, H5S_ALL, H5P_DEFAULT, bytes.data()) >= 0;
    });
    me.check(array.reset(), "array");
    return place;
}

std::uint64_t Hdf5Output::close()
{
    const bool good = impl_->file.reset();
    impl_->check(good, "file");
    return impl_->sink.size;
}

void Hdf5Output::commit(std::string_view user_block)
{
    std::string block(user_block.substr(0, user_block_bytes));
    block.resize(user_block_bytes, '\0');
    impl_->sink.file.write_at(0, block);
    impl_->sink.file.commit();
}

} // namespace lodex
