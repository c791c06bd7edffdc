#include "CBaseEvent.h"
#include "CUiComponent.h"
#include "CWidgetBuilder.h"
#include "QVArrayList.h"
#include "QVProfile.h"

#include <QAction>
#include <QLabel>
#include <QMainWindow>
#include <QPushButton>

#include <gtest/gtest.h>

#include <vector>

namespace {

TEST(SdkWidgetBuilder, PresetPathReplacesFromTheLastDot)
{
    const struct { const char* form; const char* preset; } cases[] = {
        {":/plugin/MVGoZBrush/MVGoZPlugin.ui", ":/plugin/MVGoZBrush/MVGoZPlugin.preset"},
        {"a.b.ui", "a.b.preset"},
        {"noextension", "noextension"},
        {"dir.x/file", "dir.preset"},
        {"trailing.", "trailing.preset"},
    };
    for (const auto& c : cases) {
        CWidgetBuilder builder;
        builder.SetFormPath(QString::fromLatin1(c.form));
        EXPECT_EQ(builder.GetPresetPath().toStdString(), c.preset) << c.form;
    }
}

class CFourNames : public CUiComponent
{
public:
    QV::Result SetupUi(QWidget* root) override
    {
        ClearMissing();
        window = Find<QMainWindow>(root, "window");
        button = Find<QPushButton>(root, "button");
        label = Find<QLabel>(root, "label");
        action = Find<QAction>(root, "action");
        return MissingResult();
    }
    QMainWindow* window = nullptr;
    QPushButton* button = nullptr;
    QLabel* label = nullptr;
    QAction* action = nullptr;
};

TEST(SdkUiComponent, FindsRootChildrenAndRecordsWhatIsMissing)
{
    QMainWindow window;
    window.setObjectName(QStringLiteral("window"));
    auto* central = new QWidget(&window);
    window.setCentralWidget(central);
    auto* button = new QPushButton(central);
    button->setObjectName(QStringLiteral("button"));
    auto* wrongType = new QPushButton(central);
    wrongType->setObjectName(QStringLiteral("label")); // a label of the wrong class is missing
    auto* action = new QAction(&window);
    action->setObjectName(QStringLiteral("action"));

    CFourNames ui;
    EXPECT_EQ(ui.SetupUi(&window), QV::kFail);
    EXPECT_TRUE(ui.window == &window && ui.button == button && ui.action == action && ui.label == nullptr);
    EXPECT_EQ(ui.MissingNames(), QStringList{QStringLiteral("label")});
    delete wrongType;
    (new QLabel(central))->setObjectName(QStringLiteral("label"));
    EXPECT_EQ(ui.SetupUi(&window), QV::kOk);
    EXPECT_TRUE(ui.MissingNames().isEmpty());
    EXPECT_EQ(ui.SetupUi(nullptr), QV::kFail);
    EXPECT_EQ(ui.MissingNames().size(), 4);
}

// An event type below a built-in one; it also opens the chain registry to the test.
class CDerivedEditEvent : public CEditBlendShapeEvent
{
public:
    QByteArray TypeName() const override { return TypeChain().first(); }
    static const QList<QByteArray>& Register(const QList<QByteArray>& chain) { return RegisterChain(chain); }

protected:
    const QList<QByteArray>& TypeChain() const override
    {
        static const QList<QByteArray>& chain = Register({"CDerivedEditEvent", "CEditBlendShapeEvent", "CBaseEvent"});
        return chain;
    }
};

TEST(SdkEvents, KindAndExactTypeCompareNames)
{
    const CBaseEvent base;
    const CEditBlendShapeEvent edit;
    const CObjectDataEvent data;
    const CDerivedEditEvent derived;
    const struct { const CBaseEvent* event; const CBaseEvent* sample; bool kind; bool exact; } cases[] = {
        {&edit, &edit, true, true},     {&derived, &edit, true, false}, {&edit, &derived, false, false},
        {&data, &edit, false, false},   {&edit, &base, true, false},    {&base, &edit, false, false},
        {&data, &data, true, true},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.event->TypeName().toStdString() + " ~ " + c.sample->TypeName().toStdString());
        EXPECT_EQ(c.event->IsKindOf(*c.sample), c.kind);
        EXPECT_EQ(c.event->IsExactType(*c.sample), c.exact);
    }
}

TEST(SdkEvents, RegisteredChainsStayAtTheirAddressWhenMoreRegister)
{
    // Enough distinct chains to make any growing contiguous store reallocate several times.
    std::vector<const QList<QByteArray>*> held;
    for (int i = 0; i < 200; ++i) {
        held.push_back(&CDerivedEditEvent::Register({"CGrowEvent" + QByteArray::number(i), "CBaseEvent"}));
    }
    for (int i = 0; i < 200; ++i) {
        EXPECT_EQ(*held[static_cast<size_t>(i)], (QList<QByteArray>{"CGrowEvent" + QByteArray::number(i), "CBaseEvent"}));
    }
    EXPECT_EQ(&CDerivedEditEvent::Register({"CGrowEvent7", "CBaseEvent"}), held[7]) << "a known chain is handed out again";
    EXPECT_TRUE(CEditBlendShapeEvent().IsKindOf(CBaseEvent())) << "the built-in events still answer by name";
}

TEST(SdkArrayList, ReportsRangeErrorsAsResults)
{
    QV::CArrayList<int> list{1, 2};
    int value = 0;
    EXPECT_EQ(list.Get(1, value), QV::kOk);
    EXPECT_EQ(value, 2);
    for (int index : {2, -1}) {
        EXPECT_EQ(list.Get(index, value), QV::kOutOfRange) << index;
    }
    EXPECT_EQ(list.RemoveAt(5), QV::kOutOfRange);
    EXPECT_EQ(list.Reserve(-1), QV::kOutOfRange);
    EXPECT_EQ(list.RemoveAt(0), QV::kOk);
    EXPECT_EQ(list.GetCount(), 1);
    EXPECT_EQ(list[0], 2);
}

TEST(SdkProfile, ReadsSectionsKeysAndNumbers)
{
    QV::CProfile profile;
    ASSERT_EQ(profile.Parse("; sizes\n[GoZTextureSize]\nCount = 2\r\nSize0=512\nSize1 = big\n[Other]\nCount=9\n"), QV::kOk);
    int count = 0;
    EXPECT_EQ(profile.ReadInt(QStringLiteral("gozTextureSize"), QStringLiteral("count"), count), QV::kOk);
    EXPECT_EQ(count, 2);
    unsigned long long size = 0;
    EXPECT_EQ(profile.ReadUint64(QStringLiteral("GoZTextureSize"), QStringLiteral("Size0"), size), QV::kOk);
    EXPECT_EQ(size, 512u);
    EXPECT_EQ(profile.ReadUint64(QStringLiteral("GoZTextureSize"), QStringLiteral("Size1"), size), QV::kFail);
    EXPECT_EQ(profile.ReadUint64(QStringLiteral("GoZTextureSize"), QStringLiteral("Size2"), size), QV::kFail);
    EXPECT_EQ(profile.ReadInt(QStringLiteral("Other"), QStringLiteral("Count"), count), QV::kOk);
    EXPECT_EQ(count, 9);
    QV::CProfile missing;
    EXPECT_EQ(missing.Open(QStringLiteral("/no/such/GoZTextureSize.ini")), QV::kOutOfMemory);
    EXPECT_FALSE(missing.IsOpen());
}

} // namespace
