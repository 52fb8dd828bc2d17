// What people do in their first hour with the strings that they have.
#include <kescorexml/Base64.h>
#include <kescorexml/DOM.h>
#include <kescorexml/DOMElement.h>
#include <kescorexml/DOMException.h>
#include <kescorexml/DOMParser.h>
#include <kescorexml/DOMPath.h>
#include <kescorexml/FileInputSource.h>
#include <kescorexml/StandaloneDOMElement.h>
#include <kescorexml/StandaloneDOMParser.h>
#include <kescorexml/StringInputSource.h>
#include <kescorexml/XMLDomFormatter.h>
#include <kescorexml/XMLStringFormatter.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <iomanip>
#include <iostream>
#include <map>
#include <set>
#include <sstream>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

using namespace std::string_literals;
using namespace std::string_view_literals;

namespace {

void ParseTextsOfAllKinds()
{
    const std::string text = "<a>caf\xC3\xA9</a>";
    const DOMParser parser;
    std::cout << parser.ParseXmlString(text, "id"s)->GetDocumentRoot()->GetText()
              << parser.ParseXmlString(std::string_view(text), "id"sv)->GetDocumentRoot()->GetText()
              << parser.ParseXmlString(text.c_str(), "id")->GetDocumentRoot()->GetText()
              << parser.ParseXmlString(u"<a>caf\u00E9</a>"s, u"id"s)->GetDocumentRoot()->GetText()
              << parser.ParseXmlString(u"<a>caf\u00E9</a>"sv, u"id"sv)->GetDocumentRoot()->GetText()
              << parser.ParseXmlString(u"<a/>", u"id")->GetDocumentRoot()->GetText()
              << parser.ParseXmlString(u8"<a>caf\u00E9</a>"s, u8"id"s)->GetDocumentRoot()->GetText()
              << '\n';
}

void RefuseBytesThatAreNoText()
{
    const std::string_view bytes = "<a>\xFF</a>";
    StringInputSource source(bytes, "id"s, false);
    std::cout << DOMParser().ParseXmlString(bytes, "id")->HasErrors()
              << DOMParser().ParseXmlInputSource(source, false)->HasErrors()
              << DOMParser().ParseXmlString("<a/>"sv, "id")->HasErrors()
              << StandaloneDOMParser().ParseXmlString("<a/>"sv, "id"sv).errors.size() << '\n';
}

void ParseFilesByName()
{
    const std::filesystem::path folder = ".";
    const std::string name = "sample.xml";
    std::cout << DOMParser().ParseXmlFile(name)->HasErrors()
              << DOMParser().ParseXmlFile(std::string_view(name))->HasErrors()
              << DOMParser().ParseXmlFile(folder / name)->HasErrors()
              << StandaloneDOMParser().ParseXmlFile(folder / name).errors.size()
              << (FileInputSource(folder / name).Size() > 0) << '\n';
}

void EditWithStrings()
{
    const std::string name = "item";
    DOMElement element(name);
    element.SetText("tea"s);
    element.AppendText(" and "sv);
    element.AppendText(u"coffee"s);
    for (const auto& [key, value] : std::map<std::string, std::string>{{"a", "1"}, {"b", "2"}})
        element.SetAttribute(key, value);
    element.AddNewChild("child"s)->SetText(std::to_string(42));
    element.SetName(name + "s");
    std::cout << XMLDomFormatter::RenderAsXMLString(element, nullptr, false);
}

void FindWithStrings()
{
    const auto document = DOMParser().ParseXmlString("<l><i n='1'>x</i><i n='2'>y</i></l>", "l");
    DOMElement& list = *document->GetDocumentRoot();
    const std::string path = "//i";
    std::cout << DOMPath::GetFirst(list, path)->GetText()
              << DOMPath::GetAll(list, std::string_view(path)).size() << list.GetChildText("i"s)
              << list.GetRequiredChildByAttr("n"s, "2"sv).GetText()
              << list.GetChild("i"sv)->HasAttribute("n"s) << '\n';
    for (const DOMElement& item : DOMPath::Walk(list, path))
        std::cout << item.GetAttribute("n"s) << ' ';
    std::cout << '\n';
}

void CompareWithStrings()
{
    const DOMElement element(u"tea");
    const TString& name = element.GetName();
    const std::string same = "tea";
    std::cout << (name == same) << (same == name) << (name == "tea") << ("tea" == name)
              << (name == "tea"sv) << (name == u"tea"s) << (u"tea"sv == name) << (name != "coffee"s)
              << (name < "tee"s) << ("sea"s < name) << (name >= same) << name.empty() << '\n';
}

void AddStrings()
{
    const TString name = u"tea";
    TString sum = "green "s + name + " for "s + u"two"sv + "\n";
    sum += "and "s;
    sum += "one "sv;
    sum += u"more"s;
    std::cout << sum << '\n';
}

void GoBack()
{
    const TString name = "caf\xC3\xA9"s;
    const std::string bytes = name.toStdString();
    const std::u16string_view units = name;
    const std::u16string copy(units);
    const std::filesystem::path path = name.view();
    std::cout << bytes.size() << units.size() << copy.size() << ' ' << path.string() << '\n';
}

void PrintStrings()
{
    std::ostringstream out;
    out << std::setw(6) << TString(u"tea") << '|' << std::left << std::setw(6) << TString("tea"s);
    std::cout << out.str() << "|\n";
}

void KeepStringsInContainers()
{
    const std::vector<std::string> words{"tea", "coffee", "tea"};
    const std::set<TString> names(words.begin(), words.end());
    std::unordered_map<TString, int> counts;
    for (const std::string& word : words)
        ++counts[word];
    const std::vector<TString> list{"x"s, "y"sv, u"z"s, u"z"};
    std::cout << names.size() << counts["tea"s] << list.size()
              << std::count(list.begin(), list.end(), "z"s) << names.contains("tea"s) << '\n';
}

void WriteWithStrings()
{
    XMLStringFormatter formatter("  "s, false);
    formatter.OutputOpenTag("list"s, {{"kind"s, "tea"s}});
    formatter.OutputContent("a < b"s);
    formatter.OutputCloseTag("list"sv);
    std::cout << formatter.GetOutput();
}

void ReportWithStrings()
{
    const std::string message = "no tea";
    try {
        throw DOMException(message, TError::ErrorInfo::NoError());
    } catch (const DOMException& e) {
        std::cout << (e.GetMessagesFront() == message) << IsBase64("UXQ="s)
                  << Base64Decode("UVE="sv).size() << '\n';
    }
}

} // namespace

int main()
{
    ParseTextsOfAllKinds();
    RefuseBytesThatAreNoText();
    ParseFilesByName();
    EditWithStrings();
    FindWithStrings();
    CompareWithStrings();
    AddStrings();
    GoBack();
    PrintStrings();
    KeepStringsInContainers();
    WriteWithStrings();
    ReportWithStrings();
}
