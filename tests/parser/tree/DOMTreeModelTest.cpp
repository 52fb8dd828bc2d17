// Random changes of two documents beside a plain model of them that is told the same.

#include "support/TreeModel.h"

#include <algorithm>
#include <functional>
#include <random>
#include <set>

namespace {

using namespace TreeModel;

/// Makes each change on both sides and compares all that can be seen.
class Comparison
{
public:
    explicit Comparison(unsigned seed) : m_random(seed)
    {
        for (int i = 0; i < 2; ++i)
            m_model.documents[i].root->real = m_documents[i].GetRoot();
    }

    ~Comparison()
    {
        // The elements that belong to nobody end in the order of the vector on both sides.
        m_loose.clear();
    }

    Comparison(const Comparison&) = delete;
    Comparison& operator=(const Comparison&) = delete;

    void Step()
    {
        switch (Below(22)) {
        case 0:
        case 1:
        case 2:
        case 3:
            AddNewChild();
            break;
        case 4:
            Remove();
            break;
        case 5:
        case 6:
            InsertLoose();
            break;
        case 7:
            Move();
            break;
        case 8:
            Adopt();
            break;
        case 9:
            AdoptChildren();
            break;
        case 10:
            MoveToFront();
            break;
        case 11:
            Copy();
            break;
        case 12:
            Assign();
            break;
        case 13:
            DestroyLoose();
            break;
        case 14:
        case 15:
        case 16:
            Record();
            break;
        case 17:
            Clear();
            break;
        case 18:
            AdoptOrCopyDiagnostics();
            break;
        case 19:
            ChangeAttributes();
            break;
        case 20:
            WholeDocument();
            break;
        default:
            SetText();
            break;
        }
    }

    void Compare()
    {
        EXPECT_EQ(m_log.Count(), m_model.misses);
        for (int i = 0; i < 2; ++i) {
            ModelDocument& model = m_model.documents[i];
            CompareTree(*model.root, *m_documents[i].GetRoot());
            CompareMessages(i, *model.root);
            EXPECT_EQ(m_documents[i].HasErrors(), !model.errors.empty());
            EXPECT_EQ(m_documents[i].HasWarnings(), !model.warnings.empty());
        }
        for (const auto& [model, real] : m_loose)
            CompareTree(*model, *real);
        for (int i = 0; i < 5; ++i)
            CompareRelations(Any(), Any());
    }

private:
    struct Loose
    {
        Owner model;
        std::unique_ptr<DOMElement> real;
    };

    std::size_t Below(std::size_t end)
    {
        return std::uniform_int_distribution<std::size_t>(0, end - 1)(m_random);
    }

    ModelElement& Any()
    {
        auto position = m_model.living.begin();
        std::advance(position, static_cast<std::ptrdiff_t>(Below(m_model.living.size())));
        return *position->second;
    }

    ModelElement& AnyRoot() { return *m_model.documents[Below(2)].root; }

    /// Nothing, a child of `parent`, or any element.
    ModelElement* AnyInsertionPoint(const ModelElement& parent)
    {
        switch (Below(4)) {
        case 0:
            return &Any();
        case 1:
            return nullptr;
        default:
            return parent.children.empty() ? nullptr
                                           : parent.children[Below(parent.children.size())].get();
        }
    }

    static DOMElement* Real(ModelElement* element)
    {
        return element == nullptr ? nullptr : element->real;
    }

    static void Pair(ModelElement& model, DOMElement& real)
    {
        model.real = &real;
        ASSERT_EQ(model.children.size(), real.GetChildren().size());
        for (std::size_t i = 0; i < model.children.size(); ++i)
            Pair(*model.children[i], real.GetChildren()[i]);
    }

    void AddNewChild()
    {
        ModelElement& parent = Any();
        ModelElement* before = AnyInsertionPoint(parent);
        const std::string name(1, static_cast<char>('a' + Below(4)));
        DOMElement* real = parent.real->AddNewChild(TString::fromUtf8(name), Real(before));
        m_model.Insert(parent, m_model.Make(name), before)->real = real;
    }

    void Remove()
    {
        ModelElement& child = Any();
        if (!child.isHeld) {
            // Not in the list of what it names as its parent, if there is any.
            if (ModelElement* parent = m_model.Parent(child)) {
                EXPECT_TRUE(CatchAssertion([&] { parent->real->RemoveChild(*child.real); }));
            }
            return;
        }
        ModelElement& parent = *m_model.Parent(child);
        if (Below(4) == 0) {
            auto removed = parent.real->RemoveChildren();
            for (auto& real : removed)
                m_loose.push_back({m_model.Remove(*parent.children.front()), std::move(real)});
            return;
        }
        auto real = parent.real->RemoveChild(*child.real);
        m_loose.push_back({m_model.Remove(child), std::move(real)});
    }

    void InsertLoose()
    {
        if (m_loose.empty())
            return;
        const std::size_t index = Below(m_loose.size());
        Loose& loose = m_loose[index];
        ModelElement& parent = Any();
        ModelElement* before = AnyInsertionPoint(parent);
        if (m_model.IsInTreeOf(parent, *loose.model)) {
            EXPECT_TRUE(CatchAssertion(
                [&] { parent.real->InsertChild(std::move(loose.real), Real(before)); }));
            EXPECT_NE(loose.real, nullptr);
            return;
        }
        parent.real->InsertChild(std::move(loose.real), Real(before));
        m_model.Insert(parent, std::move(loose.model), before);
        m_loose.erase(m_loose.begin() + static_cast<std::ptrdiff_t>(index));
    }

    void MoveIn(ModelElement& child, ModelElement& parent, ModelElement* before)
    {
        Owner moved = m_model.Remove(child);
        m_model.Insert(parent, std::move(moved), before);
    }

    void Move()
    {
        ModelElement& child = Any();
        ModelElement& parent = Any();
        ModelElement* before = AnyInsertionPoint(parent);
        if (!child.isHeld || m_model.IsInTreeOf(parent, child)) {
            EXPECT_TRUE(CatchAssertion([&] { child.real->Move(*parent.real, Real(before)); }));
            return;
        }
        child.real->Move(*parent.real, Real(before));
        MoveIn(child, parent, before);
    }

    void Adopt()
    {
        ModelElement& child = Any();
        ModelElement& parent = Any();
        ModelElement* before = AnyInsertionPoint(parent);
        const ModelElement* old = m_model.Parent(child);
        const bool isNothing = old != nullptr && (&child == &parent || old == &parent);
        if (!isNothing && (!child.isHeld || m_model.IsInTreeOf(parent, child))) {
            EXPECT_TRUE(CatchAssertion([&] { parent.real->Adopt(*child.real, Real(before)); }));
            return;
        }
        parent.real->Adopt(*child.real, Real(before));
        if (!isNothing)
            MoveIn(child, parent, before);
    }

    void AdoptChildren()
    {
        ModelElement& from = Any();
        ModelElement& to = Any();
        ModelElement* before = Below(3) == 0 && !from.children.empty()
                                   ? from.children[Below(from.children.size())].get()
                                   : AnyInsertionPoint(to);
        const bool isBelow =
            std::any_of(from.children.begin(), from.children.end(),
                        [&](const Owner& child) { return m_model.IsInTreeOf(to, *child); });
        if (&from != &to && isBelow) {
            EXPECT_TRUE(CatchAssertion([&] { to.real->AdoptChildren(*from.real, Real(before)); }));
            return;
        }
        to.real->AdoptChildren(*from.real, Real(before));
        if (&from == &to)
            return;
        std::vector<Owner> taken;
        while (!from.children.empty())
            taken.push_back(m_model.Remove(*from.children.front()));
        for (Owner& child : taken)
            m_model.Insert(to, std::move(child), before);
    }

    void MoveToFront()
    {
        ModelElement& child = Any();
        ModelElement* parent = m_model.Parent(child);
        const bool isNothing = parent != nullptr && parent->children.size() < 2;
        if (!isNothing && !child.isHeld) {
            EXPECT_TRUE(CatchAssertion([&] { child.real->MoveToFront(); }));
            return;
        }
        child.real->MoveToFront();
        if (!isNothing)
            MoveIn(child, *parent, parent->children.front().get());
    }

    void Copy()
    {
        ModelElement& source = Any();
        // Copies of copies would grow without end.
        if (m_model.living.size() > 150)
            return;
        auto real = std::make_unique<DOMElement>(*source.real);
        Owner model = m_model.Copy(source, source.document);
        Pair(*model, *real);
        m_loose.push_back({std::move(model), std::move(real)});
    }

    void Assign()
    {
        ModelElement& source = Any();
        ModelElement& target = Any();
        if (m_model.living.size() > 150)
            return;
        *target.real = *source.real;
        m_model.Assign(target, source);
        Pair(target, *target.real);
    }

    void DestroyLoose()
    {
        if (m_loose.empty())
            return;
        const std::size_t index = Below(m_loose.size());
        m_loose[index].real.reset();
        m_model.Destroy(std::move(m_loose[index].model));
        m_loose.erase(m_loose.begin() + static_cast<std::ptrdiff_t>(index));
    }

    void Record()
    {
        ModelElement& element = Any();
        const std::string message = std::to_string(m_nextMessage++);
        const TString text = TString::fromUtf8(message);
        if (element.document == c_nobody) {
            EXPECT_TRUE(CatchAssertion([&] { element.real->Warning(text, MakeInfo(1)); }));
            return;
        }
        ModelDocument& document = m_model.documents[element.document];
        const std::size_t kind = Below(4);
        const auto info = static_cast<unsigned>(Below(1000));
        const bool isReported = Below(2) == 0;
        const bool isCancel = kind == 0 && Below(2) == 0;
        auto& messages = (kind < 2 ? document.errors : document.warnings)[element.id];
        messages.insert(kind % 2 == 0 ? messages.end() : messages.begin(),
                        {message, info, isReported, isCancel});
        switch (kind) {
        case 0:
            element.real->Error(text, MakeInfo(info), isReported, isCancel);
            break;
        case 1:
            element.real->PrefixError(text, MakeInfo(info), isReported);
            break;
        case 2:
            element.real->Warning(text, MakeInfo(info));
            break;
        default:
            element.real->PrefixWarning(text, MakeInfo(info));
            break;
        }
    }

    void Clear()
    {
        ModelElement& element = Any();
        const std::size_t index = Below(2);
        ModelDocument& model = m_model.documents[index];
        const bool errors = Below(2) == 0;
        Messages& messages = errors ? model.errors : model.warnings;
        if (errors)
            m_documents[index].ClearErrors(*element.real);
        else
            m_documents[index].ClearWarnings(*element.real);
        if (element.parent == c_nobody)
            messages.clear();
        Model::WalkBackwards(element, [&](const ModelElement& e) { messages.erase(e.id); });
    }

    void AdoptOrCopyDiagnostics()
    {
        ModelElement& node = Any();
        ModelElement* target = Below(2) == 0 ? nullptr : &Any();
        const std::size_t to = Below(2);
        const bool adopt = Below(2) == 0;
        if (adopt)
            m_documents[to].AdoptErrorsAndWarningsForNode(*node.real, Real(target));
        else
            m_documents[to].CopyErrorsAndWarningsForNode(*node.real, Real(target));
        m_model.AdoptOrCopy(static_cast<int>(to), node, target == nullptr ? node.id : target->id,
                            adopt);
    }

    void ChangeAttributes()
    {
        ModelElement& to = Any();
        ModelElement& from = Any();
        const std::string name(1, static_cast<char>('k' + Below(3)));
        const TString realName = TString::fromUtf8(name);
        switch (Below(4)) {
        case 0:
            to.real->AdoptAttribute(*from.real, realName);
            if (const auto found = from.attributes.find(name); found != from.attributes.end()) {
                to.attributes[name] = found->second;
                from.attributes.erase(name);
            }
            break;
        case 1: {
            const bool overwrite = Below(2) == 0;
            to.real->AdoptAttributes(*from.real, overwrite);
            for (const auto& [key, value] : from.attributes) {
                if (overwrite)
                    to.attributes[key] = value;
                else
                    to.attributes.emplace(key, value);
            }
            from.attributes.clear();
            break;
        }
        default:
            to.attributes[name] = std::to_string(m_nextMessage);
            to.real->SetAttribute(realName, TString::number(m_nextMessage));
            ++m_nextMessage;
            break;
        }
    }

    void WholeDocument()
    {
        const std::size_t from = Below(2);
        const std::size_t to = Below(2);
        ModelDocument& source = m_model.documents[from];
        ModelDocument& target = m_model.documents[to];
        if (Below(2) == 0) {
            m_documents[from].MoveErrorsAndWarningsTo(m_documents[to]);
            for (Messages ModelDocument::*kind :
                 {&ModelDocument::errors, &ModelDocument::warnings}) {
                const Messages moved = from == to ? Messages() : source.*kind;
                (source.*kind).clear();
                target.*kind = moved;
            }
            return;
        }
        if (Below(3) != 0 || m_model.living.size() > 150)
            return;
        m_documents[to].DeepCopy(m_documents[from]);
        target.errors.clear();
        target.warnings.clear();
        m_model.Assign(*target.root, *source.root);
        Pair(*target.root, *m_documents[to].GetRoot());
    }

    void SetText()
    {
        ModelElement& element = Any();
        element.text = std::to_string(m_nextMessage++);
        element.real->SetText(TString::fromUtf8(element.text));
    }

    void CompareTree(const ModelElement& model, const DOMElement& real)
    {
        ASSERT_EQ(model.real, &real);
        ASSERT_EQ(real.GetName().toStdString(), model.name);
        EXPECT_EQ(real.GetText().toStdString(), model.text);
        EXPECT_EQ(real.GetDOMManager(),
                  model.document == c_nobody ? nullptr : &m_documents[model.document]);
        EXPECT_EQ(real.GetParent(), Real(m_model.Parent(model)));
        EXPECT_EQ(real.IsRootNode(), model.parent == c_nobody);
        std::map<std::string, std::string> attributes;
        for (const auto& [name, value] : real.GetAttributes())
            attributes[name.toStdString()] = value.toStdString();
        EXPECT_EQ(attributes, model.attributes);
        ASSERT_EQ(real.GetChildren().size(), model.children.size());
        for (std::size_t i = 0; i < model.children.size(); ++i)
            CompareTree(*model.children[i], real.GetChildren()[i]);
    }

    /// What the listings of one document say of a subtree.
    void CompareMessages(int document, ModelElement& top)
    {
        const ModelDocument& model = m_model.documents[document];
        const DOM& real = m_documents[document];
        std::list<TString> texts;
        std::list<TError::ErrorInfo> infos;
        real.GetErrors(*top.real, texts);
        real.GetErrors(*top.real, infos);
        std::vector<ModelMessage> expected = Model::List(model.errors, top);
        real.GetWarnings(*top.real, texts);
        real.GetWarnings(*top.real, infos);
        const std::vector<ModelMessage> warnings = Model::List(model.warnings, top);
        expected.insert(expected.end(), warnings.begin(), warnings.end());
        ASSERT_EQ(texts.size(), expected.size());
        ASSERT_EQ(infos.size(), expected.size());
        auto text = texts.begin();
        auto info = infos.begin();
        for (const ModelMessage& message : expected) {
            EXPECT_EQ(text++->toStdString(), message.text);
            EXPECT_EQ(*info++, MakeInfo(message.info));
        }
    }

    void CompareRelations(ModelElement& a, ModelElement& b)
    {
        EXPECT_EQ(a.real->IsChildOf(*b.real), m_model.IsChildOf(a, b));
        for (int i = 0; i < 2; ++i) {
            const ModelDocument& model = m_model.documents[i];
            const DOM& real = m_documents[i];
            const auto isAny = [](const ModelMessage&) { return true; };
            EXPECT_EQ(real.HasErrors(*a.real), m_model.HasAny(model.errors, a, isAny));
            EXPECT_EQ(real.HasWarnings(*a.real), m_model.HasAny(model.warnings, a, isAny));
            EXPECT_EQ(real.HasUnreportedErrors(*a.real),
                      m_model.HasAny(model.errors, a,
                                     [](const ModelMessage& m) { return !m.isReported; }));
            EXPECT_EQ(
                real.HasCancelErrors(*a.real),
                m_model.HasAny(model.errors, a, [](const ModelMessage& m) { return m.isCancel; }));
            EXPECT_EQ(real.HasOnlyCancelErrors(*a.real),
                      !m_model.HasAny(model.errors, a,
                                      [](const ModelMessage& m) { return !m.isCancel; }));
            CompareMessages(i, a);
        }
        const ModelElement* holder = &a;
        while (holder != nullptr && holder->attributes.count("k") == 0)
            holder = m_model.Parent(*holder);
        EXPECT_EQ(a.real->GetParentAttr(u"k").toStdString(),
                  holder == nullptr ? "" : holder->attributes.at("k"));
    }

    LogCapture m_log;
    std::mt19937 m_random;
    Model m_model;
    DOM m_documents[2];
    std::vector<Loose> m_loose;
    int m_nextMessage = 0;
};

} // namespace

TEST(DOMTreeModel, TenThousandsOfRandomChangesGoAsDefined)
{
    for (unsigned seed = 1; seed <= 60; ++seed) {
        Comparison comparison(seed);
        for (int step = 0; step < 400; ++step) {
            comparison.Step();
            comparison.Compare();
            ASSERT_FALSE(testing::Test::HasFailure()) << "seed " << seed << " step " << step;
        }
    }
}
