#include "driver/needed_libraries.h"

#include <cstring>
#include <fstream>
#include <link.h>
#include <regex>
#include <sstream>

namespace dov417 {

namespace {

// A file's bytes; nothing beyond their end is ever read.
class Image {
public:
    explicit Image(const std::string& file)
    {
        std::ostringstream bytes;
        bytes << std::ifstream(file, std::ios::binary).rdbuf();
        bytes_ = bytes.str();
    }

    template <typename Record>
    bool read(std::size_t offset, Record& record) const
    {
        if (offset > bytes_.size() || bytes_.size() - offset < sizeof record)
            return false;
        std::memcpy(&record, bytes_.data() + offset, sizeof record);
        return true;
    }

    // Up to the next zero; "" where there is none.
    std::string text(std::size_t offset) const
    {
        const std::size_t end = bytes_.find('\0', offset);
        return offset >= bytes_.size() || end == std::string::npos
                   ? std::string()
                   : bytes_.substr(offset, end - offset);
    }

private:
    std::string bytes_;
};

using ElfHeader = ElfW(Ehdr);
using Segment = ElfW(Phdr);
using Entry = ElfW(Dyn);

constexpr unsigned char ownClass = sizeof(void*) == 8 ? ELFCLASS64 : ELFCLASS32;

std::vector<Segment> segmentsOf(const Image& image)
{
    std::vector<Segment> segments;
    ElfHeader header;
    Segment segment;
    if (!image.read(0, header) || std::memcmp(header.e_ident, ELFMAG, SELFMAG) != 0 ||
        header.e_ident[EI_CLASS] != ownClass || header.e_phentsize != sizeof segment)
        return segments;
    for (std::size_t i = 0; i < header.e_phnum; ++i)
        if (image.read(header.e_phoff + i * sizeof segment, segment))
            segments.push_back(segment);
    return segments;
}

// Where the bytes of an address of the loaded file lie in the file.
std::size_t offsetOf(const std::vector<Segment>& segments, std::size_t address)
{
    for (const Segment& segment : segments)
        if (segment.p_type == PT_LOAD && address >= segment.p_vaddr &&
            address - segment.p_vaddr < segment.p_filesz)
            return address - segment.p_vaddr + segment.p_offset;
    return std::string::npos;
}

} // namespace

std::vector<std::string> neededLibraries(const std::string& file)
{
    const Image image(file);
    const std::vector<Segment> segments = segmentsOf(image);
    std::vector<std::size_t> names; // offsets in the table of texts
    std::size_t texts = std::string::npos;
    for (const Segment& segment : segments) {
        Entry entry;
        if (segment.p_type != PT_DYNAMIC)
            continue;
        for (std::size_t at = 0; at < segment.p_filesz; at += sizeof entry) {
            if (!image.read(segment.p_offset + at, entry) || entry.d_tag == DT_NULL)
                break;
            if (entry.d_tag == DT_NEEDED)
                names.push_back(entry.d_un.d_val);
            if (entry.d_tag == DT_STRTAB)
                texts = offsetOf(segments, entry.d_un.d_ptr);
        }
    }
    std::vector<std::string> libraries;
    if (texts != std::string::npos)
        for (const std::size_t name : names)
            libraries.push_back(image.text(texts + name));
    return libraries;
}

int qtGeneration(const std::vector<std::string>& libraries)
{
    // Qt 4 calls it libQtCore.so.4.
    static const std::regex core("libQt[56]?Core\\.so\\.([0-9])");
    std::smatch found;
    for (const std::string& library : libraries)
        if (std::regex_match(library, found, core))
            return std::stoi(found[1]);
    return 0;
}

} // namespace dov417
