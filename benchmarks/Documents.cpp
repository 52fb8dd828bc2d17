#include "Documents.h"

#include <array>
#include <fstream>
#include <iterator>
#include <random>
#include <stdexcept>
#include <string_view>

namespace {

constexpr std::array<std::string_view, 12> c_words{"alpha", "north",    "measure", "of",
                                                   "value", "sum",      "region",  "the",
                                                   "sales", "forecast", "by",      "quarter"};

class Writer
{
public:
    explicit Writer(std::size_t bytes)
    {
        m_out.reserve(bytes + 4096);
        m_out = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n";
    }

    Writer& operator<<(std::string_view text)
    {
        m_out += text;
        return *this;
    }
    Writer& Number(unsigned limit)
    {
        m_out += std::to_string(m_random() % limit);
        return *this;
    }
    Writer& Words(unsigned count)
    {
        for (unsigned i = 0; i < count; ++i) {
            if (i > 0)
                m_out += ' ';
            m_out += c_words[m_random() % c_words.size()];
        }
        return *this;
    }
    unsigned Random(unsigned limit) { return static_cast<unsigned>(m_random() % limit); }
    std::size_t Size() const { return m_out.size(); }
    std::string Take() { return std::move(m_out); }

private:
    std::string m_out;
    std::mt19937 m_random{20240301};
};

} // namespace

std::string MakeAttributeHeavy(std::size_t bytes)
{
    Writer out(bytes);
    out << "<workbook>\n";
    while (out.Size() < bytes) {
        out << "  <column caption='";
        out.Words(2) << "' datatype='real' name='[";
        out.Words(1).Number(1000) << "]' role='measure' type='";
        out.Words(1) << "'";
        if (out.Random(4) == 0) {
            out << ">\n    <calculation class='custom' formula='SUM([";
            out.Words(1) << "])' />\n  </column>\n";
        } else {
            out << " />\n";
        }
    }
    out << "</workbook>\n";
    return out.Take();
}

std::string MakeTextHeavy(std::size_t bytes)
{
    Writer out(bytes);
    out << "<book>\n";
    while (out.Size() < bytes) {
        out << "<chapter><title>";
        out.Words(4) << "</title>\n";
        for (int i = 0; i < 10; ++i) {
            out << "<p>";
            out.Words(40) << " &lt;";
            out.Words(10) << "&gt; &amp; ";
            out.Words(30) << "</p>\n";
        }
        out << "</chapter>\n";
    }
    out << "</book>\n";
    return out.Take();
}

std::string MakeDeep(std::size_t bytes)
{
    Writer out(bytes);
    out << "<tree>";
    while (out.Size() < bytes) {
        const unsigned depth = 20 + out.Random(180);
        for (unsigned i = 0; i < depth; ++i)
            (out << "<folder name='").Words(2) << "'>";
        out.Words(3);
        for (unsigned i = 0; i < depth; ++i)
            out << "</folder>\n";
    }
    out << "</tree>\n";
    return out.Take();
}

namespace {

void AddFile(std::vector<Document>& documents, const char* name, const char* path)
{
    std::ifstream file(path, std::ios::binary);
    if (file)
        documents.push_back({name, std::string(std::istreambuf_iterator<char>(file), {})});
}

} // namespace

const std::vector<Document>& GetDocuments()
{
    static const std::vector<Document> s_documents = [] {
        std::vector<Document> made;
        made.push_back({"attributes", MakeAttributeHeavy(12'400'000)});
        made.push_back({"text", MakeTextHeavy(8'000'000)});
        made.push_back({"deep", MakeDeep(4'000'000)});
        AddFile(made, "mime", "/usr/share/mime/packages/freedesktop.org.xml");
        AddFile(made, "cldr-cs", "/usr/share/unicode/cldr/common/main/cs.xml");
        AddFile(made, "te", "/usr/share/unicode/cldr/common/annotations/te.xml");
        return made;
    }();
    return s_documents;
}

const Document& GetDocument(const std::string& name)
{
    for (const Document& document : GetDocuments()) {
        if (document.name == name)
            return document;
    }
    throw std::out_of_range("no such document: " + name);
}
