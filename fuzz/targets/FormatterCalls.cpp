#include "Targets.h"

#include "support/Base64Model.h"
#include "support/ByteReader.h"
#include "support/Require.h"
#include "support/WrittenTree.h"

#include <kescorexml/DOMElement.h>
#include <kescorexml/DOMParser.h>
#include <kescorexml/XMLDomFormatter.h>
#include <kescorexml/XMLStringFormatter.h>
#include <kesplatform/LogicException.h>

#include <functional>
#include <memory>

namespace {

using AttributeMap = XMLFormatter::AttributeMap;

/// An element as the table of operations describes it.
struct Node
{
    TString name;
    AttributeMap attributes;
    TString text;
    bool encoded = false;
    std::vector<std::unique_ptr<Node>> children;

    Node* Add(const TString& childName, const AttributeMap& childAttributes)
    {
        children.push_back(std::make_unique<Node>());
        children.back()->name = childName;
        children.back()->attributes = childAttributes;
        return children.back().get();
    }
    void Append(const TString& more)
    {
        text += more;
        encoded = false;
    }
};

void RequireTree(const DOMElement& element, const Node& expected)
{
    Require(element.GetName() == expected.name, "names are as the calls say");
    Require(element.GetAttributes() == expected.attributes, "attributes are as the calls say");
    RequireEqual(element.GetText(), expected.text, "texts are as the calls say");
    Require(element.IsEncoded() == expected.encoded, "encoded marks are as the calls say");
    RequireEqual(element.GetChildren().size(), expected.children.size(), "children");
    for (std::size_t i = 0; i < expected.children.size(); ++i)
        RequireTree(element.GetChildren()[i], *expected.children[i]);
}

/// What the formatter writes of a tree, by recursion.
void Write(XMLFormatter& target, const Node& node)
{
    if (node.children.empty()) {
        if (node.text.IsEmpty())
            target.OutputTag(node.name, node.attributes);
        else
            target.OutputContentTag(node.name, node.attributes, node.text, !node.encoded);
        return;
    }
    target.OutputOpenTag(node.name, node.attributes);
    target.Indent();
    for (const auto& child : node.children)
        Write(target, *child);
    if (!node.text.IsEmpty())
        target.OutputContent(node.text, node.encoded);
    target.Undent();
    target.OutputCloseTag(node.name);
}

/// Makes the same calls of the formatter and of the model, and a text of those calls that write
/// whole elements.
class Calls
{
public:
    explicit Calls(ByteReader reader) : m_reader(reader), m_text(u"  ", false)
    {
        m_text.SetFormatMode(FormatMode::Content);
        m_root.name = u"Document";
        m_open.push_back(&m_root);
    }

    void Run()
    {
        while (!m_reader.IsAtEnd())
            RunOne();
        RequireTree(*m_formatter.GetRoot(), m_root);
        RequireOutput(FormatMode::EscapeAll);
        RequireOutput(FormatMode::Content);
        RequireText();
    }

private:
    TString ReadName()
    {
        static const TString s_names[] = {u"a", u"b", u"long-name", u"\u00E9", u":c"};
        return m_reader.Pick(s_names);
    }
    AttributeMap ReadAttributes()
    {
        AttributeMap attributes;
        for (std::size_t count = m_reader.Below(4); count > 0; --count) {
            const TString name = ReadName();
            attributes[name] = m_reader.Text();
        }
        return attributes;
    }

    /// Makes a call that is refused when no element is open.
    bool Call(const std::function<void()>& call, bool isAllowed = true)
    {
        isAllowed = isAllowed && !m_open.empty();
        try {
            call();
        } catch (const LogicException&) {
            Require(!isAllowed, "a call is refused for a reason");
            return false;
        }
        Require(isAllowed, "a call is refused where it should be");
        return true;
    }

    void RunOne()
    {
        Node* const top = m_open.empty() ? nullptr : m_open.back();
        switch (m_reader.Below(12)) {
        case 0:
            return Open();
        case 1:
            return Close(top);
        case 2:
            return Tag(top);
        case 3:
            return ContentTag(top);
        case 4: {
            const AttributeMap attributes = ReadAttributes();
            if (Call([&] { m_formatter.OutputAttributes(attributes); }))
                top->attributes = attributes;
            m_isPlain = false;
            return;
        }
        case 5: {
            const TString text = m_reader.Text();
            const bool raw = m_reader.Below(2) == 1;
            if (Call([&] { m_formatter.OutputContent(text, raw); })) {
                top->text = text;
                top->encoded = raw;
            }
            m_isPlain = false;
            return;
        }
        case 6: {
            const TString text = m_reader.Text();
            if (Call([&] { m_formatter.OutputString(text); }))
                top->Append(text);
            m_isPlain = false;
            return;
        }
        case 7: {
            const TString text = m_reader.Text();
            if (Call([&] { m_formatter.OutputLine(text); }))
                top->Append(text + u"\n");
            m_isPlain = false;
            return;
        }
        case 8:
            return Element(top);
        case 9:
            return Binary(top);
        case 10: {
            const TString text = m_reader.Text();
            if (Call([&] { m_formatter.OutputComment(text); }))
                m_comments.push_back(text);
            return;
        }
        default:
            if (Call([&] { m_formatter.OutputHeader(); }))
                m_hasHeader = true;
        }
    }

    void Open()
    {
        const TString name = ReadName();
        const AttributeMap attributes = ReadAttributes();
        if (!Call([&] { m_formatter.OutputOpenTag(name, attributes); }))
            return;
        m_open.push_back(m_open.back()->Add(name, attributes));
        m_text.OutputOpenTag(name, attributes);
        m_text.Indent();
    }
    void Close(const Node* top)
    {
        const TString name =
            m_reader.Below(4) == 0 || top == nullptr ? ReadName() : TString(top->name);
        if (!Call([&] { m_formatter.OutputCloseTag(name); }, top != nullptr && top->name == name))
            return;
        m_open.pop_back();
        if (m_open.empty())
            return;
        m_text.Undent();
        m_text.OutputCloseTag(name);
    }
    void Tag(Node* top)
    {
        const TString name = ReadName();
        const AttributeMap attributes = ReadAttributes();
        if (!Call([&] { m_formatter.OutputTag(name, attributes); }))
            return;
        top->Add(name, attributes);
        m_text.OutputTag(name, attributes);
    }
    void ContentTag(Node* top)
    {
        const TString name = ReadName();
        const AttributeMap attributes = ReadAttributes();
        const TString text = m_reader.Text();
        if (!Call([&] { m_formatter.OutputContentTag(name, attributes, text); }))
            return;
        top->Add(name, attributes)->text = text;
        m_text.OutputContentTag(name, attributes, text);
    }
    void Element(Node* top)
    {
        DOMElement element(ReadName());
        element.SetText(m_reader.Text(), true);
        DOMElement* const child = element.AddNewChild(ReadName(), nullptr);
        child->SetAttributes(ReadAttributes());
        if (!Call([&] { m_formatter.OutputDOMElement(element); }))
            return;
        // Copies are not marked as encoded.
        Node* const node = top->Add(element.GetName(), {});
        node->text = element.GetText();
        node->Add(child->GetName(), child->GetAttributes());
        m_isPlain = false;
    }
    void Binary(Node* top)
    {
        std::vector<unsigned char> bytes(m_reader.Byte());
        for (unsigned char& byte : bytes)
            byte = m_reader.Byte();
        const bool isAllowed = top != nullptr && top->text.IsEmpty();
        const auto count = static_cast<unsigned int>(bytes.size());
        m_isPlain = false;
        if (!Call([&] { m_formatter.OutputBinary(bytes.data(), count); }, isAllowed))
            return;
        const DOMElement* element = m_formatter.GetRoot();
        for (std::size_t i = 1; i < m_open.size(); ++i)
            element = &element->GetChildren()[element->GetChildren().size() - 1];
        top->text = element->GetText();
        top->encoded = true;
        Require(Base64Model::Decode(top->text) == bytes, "bytes are stored as Base64");
        Require(bytes.empty() == top->text.IsEmpty(), "no bytes are no text");
    }

    /// GetOutput gives what the model writes.
    void RequireOutput(FormatMode mode)
    {
        XMLStringFormatter expected(u"  ", false);
        expected.SetFormatMode(mode);
        if (m_hasHeader)
            expected.OutputHeader();
        for (const TString& comment : m_comments)
            expected.OutputComment(comment);
        if (!m_root.children.empty())
            Write(expected, *m_root.children[0]);
        RequireEqual(m_formatter.GetOutput(mode), expected.GetOutput(), "the output of the tree");
    }

    /// The same calls as text, parsed, give the same tree.
    void RequireText()
    {
        const DOMElement* const element = m_formatter.GetDocumentRoot();
        if (!m_isPlain || m_open.size() != 1 || m_root.children.size() != 1 ||
            !WrittenTree::IsTreeWritable(*element))
            return;
        const auto document = DOMParser().ParseXmlString(m_text.GetOutput(), u"text");
        RequireEqual(document->GetConcatenatedErrors(), TString(), "the text is well formed");
        RequireSameButBlanks(*document->GetDocumentRoot(), *element);
    }
    static void RequireSameButBlanks(const DOMElement& read, const DOMElement& built)
    {
        Require(read.GetName() == built.GetName(), "names are the same in text and tree");
        for (const auto& [name, value] : built.GetAttributes())
            RequireEqual(read.GetAttribute(name), WrittenTree::ReadAttribute(value), "attributes");
        const TString text = WrittenTree::ReadContent(built.GetText());
        RequireEqual(read.GetText(), text.trimmed().IsEmpty() ? TString() : text, "texts");
        RequireEqual(read.GetChildren().size(), built.GetChildren().size(), "children");
        for (std::size_t i = 0; i < read.GetChildren().size(); ++i)
            RequireSameButBlanks(read.GetChildren()[i], built.GetChildren()[i]);
    }

    ByteReader m_reader;
    XMLDomFormatter m_formatter;
    XMLStringFormatter m_text;
    Node m_root;
    std::vector<Node*> m_open;
    std::vector<TString> m_comments;
    bool m_hasHeader = false;
    /// All calls so far wrote whole elements.
    bool m_isPlain = true;
};

} // namespace

/// Each byte is a call, followed by its arguments.
void FuzzTargets::FormatterCalls(Bytes bytes)
{
    Calls(ByteReader(bytes)).Run();
}
