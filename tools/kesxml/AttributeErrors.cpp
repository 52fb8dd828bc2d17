#include "AttributeErrors.h"

#include "Markup.h"
#include "TextPosition.h"

#include <kescorexml/Utf8InputSource.h>

#include <algorithm>
#include <map>
#include <set>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace {

constexpr std::string_view c_instanceNamespace = "http://www.w3.org/2001/XMLSchema-instance";

TextPosition PositionOf(const Diagnostic& diagnostic)
{
    return {diagnostic.line, diagnostic.column};
}

/// How often each message was said.
using Counts = std::map<TString, std::size_t>;

/// A tag as it is tried out.
struct Trial
{
    /// Empty for the tag without attributes.
    TString attribute;
    /// In which of the documents that are made of trials, and where in that, it ends.
    std::size_t document;
    std::size_t end;
    Counts said{};
};

/// A start tag of which something was said.
struct Suspect
{
    std::vector<Diagnostic*> diagnostics;
    /// The one without attributes comes first.
    std::vector<Trial> trials{};
};

/// Writes the documents that are made of trials: those of the document element, of which there is
/// only one, in a document each, and the others in the first one.
class TrialDocuments
{
public:
    /// `text`, a document, must live as long.
    explicit TrialDocuments(std::string_view text) : m_left(2 * text.size() + c_minimum) {}

    /// What stands before the document element.
    void AddProlog(std::string_view prolog)
    {
        m_prolog = prolog;
        m_texts.front() += prolog;
    }
    /// An element begins or ends in the document.
    void Open(std::string_view tag) { m_open.push_back({tag, false}); }
    void Close()
    {
        if (m_open.empty())
            return;
        WriteEnd(m_open.back());
        m_open.pop_back();
    }
    void KeepInstanceAttributes(const std::vector<MarkupAttribute>& attributes);
    std::vector<Trial> Try(std::string_view tag, const std::vector<MarkupAttribute>& attributes);
    const std::vector<std::string>& Finish()
    {
        while (!m_open.empty())
            Close();
        return m_texts;
    }

private:
    static constexpr std::size_t c_minimum = 65536;

    struct OpenTag
    {
        std::string_view text;
        bool isWritten;
    };

    /// Whether an attribute says of what type the element is, or how names are to be read.
    bool IsKept(std::string_view name) const;
    void WriteEnd(const OpenTag& tag);
    void WriteEnclosingTags();
    Trial WriteTrial(std::string tag, const MarkupAttribute* attribute);

    /// How many bytes trials may still take.
    std::size_t m_left;
    std::string_view m_prolog;
    std::vector<std::string> m_texts{1};
    std::vector<OpenTag> m_open;
    /// Prefixes, with their colon, of the namespace of xsi:type.
    std::set<std::string, std::less<>> m_instancePrefixes;
};

void TrialDocuments::KeepInstanceAttributes(const std::vector<MarkupAttribute>& attributes)
{
    constexpr std::string_view c_declaration = "xmlns:";
    for (const MarkupAttribute& attribute : attributes) {
        if (attribute.name.starts_with(c_declaration) && attribute.value == c_instanceNamespace)
            m_instancePrefixes.insert(std::string(attribute.name.substr(c_declaration.size())) +
                                      ':');
    }
}

bool TrialDocuments::IsKept(std::string_view name) const
{
    return name == "xmlns" || name.starts_with("xmlns:") ||
           m_instancePrefixes.contains(name.substr(0, name.find(':') + 1));
}

void TrialDocuments::WriteEnd(const OpenTag& tag)
{
    if (tag.isWritten)
        m_texts.front().append("</").append(NameOfTag(tag.text)).append(">\n");
}

void TrialDocuments::WriteEnclosingTags()
{
    // Those that are written enclose those that are not.
    auto first = m_open.end();
    while (first != m_open.begin() && !std::prev(first)->isWritten)
        --first;
    for (; first != m_open.end(); ++first) {
        m_texts.front().append(first->text).append("\n");
        first->isWritten = true;
    }
}

void Write(std::string& tag, const MarkupAttribute& attribute)
{
    ((tag += ' ') += attribute.name) += '=';
    ((tag += attribute.quote) += attribute.value) += attribute.quote;
}

Trial TrialDocuments::WriteTrial(std::string tag, const MarkupAttribute* attribute)
{
    TString name;
    if (attribute != nullptr) {
        name = TString::fromStdString(std::string(attribute->name));
        Write(tag, *attribute);
    }
    if (m_open.empty())
        m_texts.emplace_back(m_prolog);
    std::string& text = m_open.empty() ? m_texts.back() : m_texts.front();
    text.append(tag).append("/>");
    const Trial trial{std::move(name), m_open.empty() ? m_texts.size() - 1 : 0, text.size()};
    text += '\n';
    return trial;
}

/// The trials of a tag; none when they would take too much.
std::vector<Trial> TrialDocuments::Try(std::string_view tag,
                                       const std::vector<MarkupAttribute>& attributes)
{
    std::string begin = "<" + std::string(NameOfTag(tag));
    std::vector<const MarkupAttribute*> tried{nullptr};
    for (const MarkupAttribute& attribute : attributes) {
        if (IsKept(attribute.name))
            Write(begin, attribute);
        else
            tried.push_back(&attribute);
    }
    const std::size_t each = begin.size() + (m_open.empty() ? m_prolog.size() : 0);
    const std::size_t all = tried.size() * each + tag.size();
    if (tried.size() == 1 || all > m_left)
        return {};
    m_left -= all;
    WriteEnclosingTags();
    std::vector<Trial> trials;
    for (const MarkupAttribute* const attribute : tried)
        trials.push_back(WriteTrial(begin, attribute));
    return trials;
}

/// The tags that end where errors were reported, in the order of the document.
std::map<TextPosition, Suspect> FindSuspects(Diagnostics& diagnostics, const TString& file)
{
    std::map<TextPosition, Suspect> suspects;
    for (Diagnostic& diagnostic : diagnostics) {
        if (diagnostic.isError && diagnostic.line > 0 && diagnostic.file == file)
            suspects[PositionOf(diagnostic)].diagnostics.push_back(&diagnostic);
    }
    return suspects;
}

std::vector<std::string> MakeTrials(std::string_view text,
                                    std::map<TextPosition, Suspect>& suspects)
{
    using Kind = MarkupToken::Kind;

    TrialDocuments documents(text);
    TextPositions positions(text);
    MarkupReader reader(text);
    bool isProlog = true;
    auto suspect = suspects.begin();
    for (MarkupToken token; suspect != suspects.end() && reader.Read(token);) {
        const bool isTag = token.kind == Kind::StartTag || token.kind == Kind::EmptyTag;
        if (token.kind == Kind::EndTag)
            documents.Close();
        if (!isTag)
            continue;
        const auto start = static_cast<std::size_t>(token.text.data() - text.data());
        if (std::exchange(isProlog, false))
            documents.AddProlog(text.substr(0, start));
        const std::vector<MarkupAttribute> attributes = AttributesOf(token.text);
        documents.KeepInstanceAttributes(attributes);
        const TextPosition end = positions.At(start + token.text.size());
        while (suspect != suspects.end() && suspect->first < end)
            ++suspect;
        if (suspect != suspects.end() && suspect->first == end)
            suspect->second.trials = documents.Try(token.text, attributes);
        if (token.kind == Kind::StartTag)
            documents.Open(token.text);
    }
    return documents.Finish();
}

/// Validates one of the documents and sorts what was said by the trials.
void Judge(const std::string& document, const std::vector<Trial*>& trials, DocumentReader& reader)
{
    Utf8InputSource source(document, u"trials", false);
    std::map<TextPosition, Trial*> byPosition;
    TextPositions positions(document);
    for (Trial* const trial : trials)
        byPosition[positions.At(trial->end)] = trial;
    for (const Diagnostic& diagnostic : reader.Check(source)) {
        const auto trial = byPosition.find(PositionOf(diagnostic));
        if (trial != byPosition.end() && diagnostic.isError && diagnostic.file == source.Id())
            ++trial->second->said[diagnostic.message];
    }
}

void JudgeAll(const std::vector<std::string>& documents, std::map<TextPosition, Suspect>& suspects,
              DocumentReader& reader)
{
    std::vector<std::vector<Trial*>> trials(documents.size());
    for (auto& [position, suspect] : suspects) {
        for (Trial& trial : suspect.trials)
            trials[trial.document].push_back(&trial);
    }
    for (std::size_t i = 0; i < documents.size(); ++i) {
        if (!trials[i].empty())
            Judge(documents[i], trials[i], reader);
    }
}

/// In which trials a message was said, and how often, in their order.
using Sayings = std::vector<std::pair<const Trial*, std::size_t>>;

std::map<TString, Sayings> SortByMessage(const std::vector<Trial>& trials)
{
    std::map<TString, Sayings> sayings;
    for (const Trial& trial : trials) {
        for (const auto& [message, count] : trial.said)
            sayings[message].emplace_back(&trial, count);
    }
    return sayings;
}

/// Names the attributes because of which a message was said, each in one of the diagnostics.
void NameAttributesOf(const std::vector<Diagnostic*>& alike, const Sayings& sayings,
                      const Trial& ofElement)
{
    const bool isOfElement = !sayings.empty() && sayings.front().first == &ofElement;
    const std::size_t unnamed = isOfElement ? sayings.front().second : 0;
    std::vector<const TString*> names;
    for (const auto& [trial, count] : sayings) {
        for (std::size_t i = unnamed; i < count; ++i)
            names.push_back(&trial->attribute);
    }
    if (unnamed + names.size() != alike.size())
        return;
    for (std::size_t i = 0; i < names.size(); ++i)
        alike[i]->attribute = *names[i];
}

} // namespace

void NameAttributes(Diagnostics& diagnostics, InputSource& source, DocumentReader& reader)
{
    std::map<TextPosition, Suspect> suspects = FindSuspects(diagnostics, source.Id());
    if (suspects.empty())
        return;
    const std::string text = ReadTextIfPossible(source);
    const std::vector<std::string> documents = MakeTrials(text, suspects);
    JudgeAll(documents, suspects, reader);
    for (const auto& [position, suspect] : suspects) {
        if (suspect.trials.empty())
            continue;
        std::map<TString, std::vector<Diagnostic*>> byMessage;
        for (Diagnostic* const diagnostic : suspect.diagnostics)
            byMessage[diagnostic->message].push_back(diagnostic);
        const std::map<TString, Sayings> sayings = SortByMessage(suspect.trials);
        for (const auto& [message, alike] : byMessage) {
            const auto found = sayings.find(message);
            if (found != sayings.end())
                NameAttributesOf(alike, found->second, suspect.trials.front());
        }
    }
}
