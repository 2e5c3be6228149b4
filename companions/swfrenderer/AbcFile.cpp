#include "companions/swfrenderer/AbcFile.h"

#include <bit>

namespace swf
{
namespace
{
enum NameKind : std::uint8_t
{
    kQName = 0x07,
    kMultiname = 0x09,
    kQNameA = 0x0D,
    kMultinameA = 0x0E,
    kRtQName = 0x0F,
    kRtQNameA = 0x10,
    kRtQNameL = 0x11,
    kRtQNameLA = 0x12,
    kMultinameL = 0x1B,
    kMultinameLA = 0x1C,
    kTypeName = 0x1D
};

class CAbcReader
{
public:
    CAbcReader(CByteReader& reader, ReadBudget& budget, AbcFile& file)
        : m_reader(reader), m_budget(budget), m_file(file)
    {
    }
    bool Read()
    {
        m_reader.Skip(4); // versions
        ReadConstants();
        ReadMethods();
        ReadMetadata();
        ReadClasses();
        for (std::uint32_t n = Count(0); n > 0 && Goes(0); --n) // scripts
        {
            (void)Number();
            ReadTraits(nullptr);
        }
        ReadBodies();
        return !m_reader.Failed();
    }

private:
    std::uint32_t Number() { return ReadAbcNumber(m_reader); }
    /// The length of a list; where nothing can be that long, the reader fails.
    std::uint32_t Count(std::uint32_t least)
    {
        const std::uint32_t n = Number();
        if (n > m_reader.Left() + least)
            m_reader.Fail();
        return m_reader.Failed() ? 0 : n;
    }
    /// @return false when the file or the budget is at its end.
    bool Goes(std::size_t cb)
    {
        if (!m_budget.Take(cb))
            m_reader.Fail();
        return !m_reader.Failed();
    }
    template <class T, class Function> void ReadList(std::vector<T>& list, const Function& read)
    {
        list.emplace_back();
        for (std::uint32_t n = Count(1); n > 1 && Goes(2 * sizeof(T)); --n)
            list.push_back(read());
    }
    std::string_view ReadString()
    {
        const auto bytes = m_reader.Take(Number());
        return {reinterpret_cast<const char*>(bytes.data()), bytes.size()};
    }
    double ReadDouble()
    {
        const std::uint64_t low = m_reader.U32();
        return std::bit_cast<double>(low | std::uint64_t{m_reader.U32()} << 32);
    }
    void ReadConstants()
    {
        ReadList(m_file.ints, [this] { return static_cast<std::int32_t>(Number()); });
        ReadList(m_file.uints, [this] { return Number(); });
        ReadList(m_file.doubles, [this] { return ReadDouble(); });
        ReadList(m_file.strings, [this] { return ReadString(); });
        ReadList(m_file.spaces,
                 [this]
                 {
                     (void)m_reader.U8(); // kind
                     return Number();
                 });
        std::vector<std::uint32_t> sets;
        ReadList(sets,
                 [this]
                 {
                     SkipNumbers(Count(0));
                     return 0U;
                 });
        ReadList(m_file.names, [this] { return ReadName(); });
    }
    AbcFile::Name ReadName()
    {
        AbcFile::Name name;
        name.kind = m_reader.U8();
        switch (name.kind)
        {
        case kQName:
        case kQNameA:
            name.space = Number();
            name.text = Number();
            break;
        case kMultiname:
        case kMultinameA:
            name.text = Number();
            (void)Number();
            break;
        case kRtQName:
        case kRtQNameA:
        case kMultinameL:
        case kMultinameLA:
            (void)Number();
            break;
        case kRtQNameL:
        case kRtQNameLA:
            break;
        case kTypeName:
            (void)Number();
            SkipNumbers(Count(0));
            break;
        default:
            m_reader.Fail();
        }
        return name;
    }
    void SkipNumbers(std::uint32_t n)
    {
        for (; n > 0 && Goes(0); --n)
            (void)Number();
    }
    void ReadMethods()
    {
        constexpr std::uint8_t kHasOptional = 0x08, kHasNames = 0x80;
        for (std::uint32_t n = Count(0); n > 0 && Goes(0); --n)
        {
            const std::uint32_t parameters = Count(0);
            (void)Number(); // type of the result
            SkipNumbers(parameters);
            (void)Number(); // name
            const std::uint8_t flags = m_reader.U8();
            if ((flags & kHasOptional) != 0)
                for (std::uint32_t i = Count(0); i > 0 && Goes(0); --i)
                {
                    (void)Number();
                    (void)m_reader.U8();
                }
            if ((flags & kHasNames) != 0)
                SkipNumbers(parameters);
        }
    }
    void ReadMetadata()
    {
        for (std::uint32_t n = Count(0); n > 0 && Goes(0); --n)
        {
            (void)Number();
            for (std::uint32_t i = Count(0); i > 0 && Goes(0); --i)
                SkipNumbers(2);
        }
    }
    void ReadClasses()
    {
        constexpr std::uint8_t kHasProtected = 0x08;
        const std::uint32_t count = Count(0);
        for (std::uint32_t n = count; n > 0 && Goes(2 * sizeof(AbcFile::Class)); --n)
        {
            AbcFile::Class& added = m_file.classes.emplace_back();
            added.name = Number();
            (void)Number(); // what it is derived from
            if ((m_reader.U8() & kHasProtected) != 0)
                (void)Number();
            SkipNumbers(Count(0)); // interfaces
            added.constructor = Number();
            ReadTraits(&added);
        }
        for (std::uint32_t n = count; n > 0 && Goes(0); --n) // what the classes have themselves
        {
            (void)Number();
            ReadTraits(nullptr);
        }
    }
    /// @param pClass  takes the methods; may be null
    void ReadTraits(AbcFile::Class* pClass)
    {
        constexpr std::uint8_t kMethod = 1, kFunction = 5, kHasMetadata = 0x40; // between the two: more without value
        for (std::uint32_t n = Count(0); n > 0 && Goes(pClass ? 2 * sizeof(AbcFile::Method) : 0); --n)
        {
            AbcFile::Method method;
            method.name = Number();
            const std::uint8_t flags = m_reader.U8(), kind = flags & 15;
            (void)Number();           // slot
            method.number = Number(); // or the type
            if (kind < kMethod || kind > kFunction)
            {
                if (Number() != 0) // value
                    (void)m_reader.U8();
            }
            else if (kind == kMethod && pClass)
                pClass->methods.push_back(method);
            if ((flags & kHasMetadata) != 0)
                SkipNumbers(Count(0));
        }
    }
    void ReadBodies()
    {
        constexpr std::size_t kEntryBytes = 64;
        for (std::uint32_t n = Count(0); n > 0 && Goes(kEntryBytes); --n)
        {
            const std::uint32_t method = Number();
            SkipNumbers(4); // room on stacks
            m_file.code.emplace(method, m_reader.Take(Number()));
            for (std::uint32_t i = Count(0); i > 0 && Goes(0); --i) // what is caught
                SkipNumbers(5);
            ReadTraits(nullptr);
        }
    }

    CByteReader& m_reader;
    ReadBudget& m_budget;
    AbcFile& m_file;
};
} // namespace

std::uint32_t ReadAbcNumber(CByteReader& reader)
{
    std::uint32_t value = 0;
    for (int shift = 0; shift < 35; shift += 7)
    {
        const std::uint32_t byte = reader.U8();
        value |= (byte & 0x7F) << shift;
        if ((byte & 0x80) == 0)
            break;
    }
    return value;
}

std::string_view AbcFile::PlainName(std::uint32_t number) const
{
    return number < names.size() ? String(names[number].text) : std::string_view();
}

std::string AbcFile::FullName(std::uint32_t number) const
{
    if (number >= names.size())
        return {};
    const std::uint32_t space = names[number].space;
    const std::string_view package = space < spaces.size() ? String(spaces[space]) : std::string_view();
    std::string name(package);
    if (!name.empty())
        name += '.';
    return name.append(String(names[number].text));
}

bool ReadAbc(CByteReader& reader, ReadBudget& budget, AbcFile& file)
{
    return CAbcReader(reader, budget, file).Read();
}
} // namespace swf
