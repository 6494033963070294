#include "cleaners/ChromiumSession.h"

#include <QList>
#include <QtEndian>

#include <limits>
#include <map>
#include <vector>

namespace {

// The commands this reads or keeps, by the ids the browser gives them.
enum Id : quint8
{
    SetTabWindow = 0,
    SetWindowBounds = 1,
    SetTabIndexInWindow = 2,
    TabNavigationPrunedFromBack = 5,
    UpdateTabNavigation = 6,
    SetSelectedNavigationIndex = 7,
    SetSelectedTabInIndex = 8,
    SetWindowType = 9,
    SetWindowBounds2 = 10,
    TabNavigationPrunedFromFront = 11,
    SetPinnedState = 12,
    SetExtensionAppId = 13,
    SetWindowBounds3 = 14,
    SetWindowAppName = 15,
    TabClosed = 16,
    WindowClosed = 17,
    SetTabUserAgentOverride = 18,
    SetActiveWindow = 20,
    LastActiveTime = 21,
    SetWindowWorkspace = 22,
    SetWindowWorkspace2 = 23,
    TabNavigationPruned = 24,
    SetTabGroup = 25,
    SetTabGuid = 28,
    SetTabUserAgentOverride2 = 29,
    SetTabData = 30,
    SetWindowUserTitle = 31,
    SetWindowVisibleOnAllWorkspaces = 32,
    AddTabExtraData = 33,
    AddWindowExtraData = 34,
    InitialStateMarker = 255, // ends the state a file starts with; appended commands follow it
};

struct Command
{
    quint8 id;
    QByteArray payload;
};

enum class Owner
{
    None, // dropped: not needed to restore a tab (session storage, tab groups' names, unknown ids)
    Tab,
    Window,
};

// Whose command it is, and where in its payload the tab's or window's id is. Commands written as a
// "pickle" start with the size of what follows, so their id comes four bytes in.
struct Subject
{
    Owner owner = Owner::None;
    qsizetype offset = 0;
};

Subject subjectOf(quint8 id)
{
    switch (id) {
    case SetTabWindow:
        return {Owner::Tab, 4}; // the window's id, then the tab's
    case SetTabIndexInWindow:
    case TabNavigationPrunedFromBack:
    case SetSelectedNavigationIndex:
    case TabNavigationPrunedFromFront:
    case SetPinnedState:
    case TabClosed:
    case LastActiveTime:
    case TabNavigationPruned:
    case SetTabGroup:
        return {Owner::Tab, 0};
    case UpdateTabNavigation:
    case SetExtensionAppId:
    case SetTabUserAgentOverride:
    case SetTabGuid:
    case SetTabUserAgentOverride2:
    case SetTabData:
    case AddTabExtraData:
        return {Owner::Tab, 4};
    case SetWindowBounds:
    case SetSelectedTabInIndex:
    case SetWindowType:
    case SetWindowBounds2:
    case SetWindowBounds3:
    case WindowClosed:
    case SetActiveWindow:
    case SetWindowWorkspace:
    case SetWindowVisibleOnAllWorkspaces:
        return {Owner::Window, 0};
    case SetWindowAppName:
    case SetWindowWorkspace2:
    case SetWindowUserTitle:
    case AddWindowExtraData:
        return {Owner::Window, 4};
    default:
        return {};
    }
}

std::optional<qint32> int32At(const QByteArray& bytes, qsizetype offset)
{
    if (offset < 0 || offset + 4 > bytes.size())
        return std::nullopt;
    return qFromLittleEndian<qint32>(bytes.constData() + offset);
}

// Reads a pickle's fields in order; any read past its end makes it invalid.
class PickleReader
{
public:
    explicit PickleReader(const QByteArray& bytes) : m_bytes(bytes) {}

    bool valid() const { return m_valid; }
    qsizetype position() const { return m_position; }

    qint32 int32()
    {
        const std::optional<qint32> value = int32At(m_bytes, m_position);
        m_valid = m_valid && value.has_value();
        m_position += 4;
        return value.value_or(0);
    }

    // A string (bytes) or a UTF-16 string (two bytes a unit), with its length, padded to four bytes.
    QByteArray string(int unitSize = 1)
    {
        const qint32 units = int32();
        const qsizetype size = qsizetype(units) * unitSize;
        if (!m_valid || units < 0 || size > m_bytes.size() - m_position) {
            m_valid = false;
            return {};
        }
        const QByteArray raw = m_bytes.mid(m_position - 4, 4 + size);
        m_position += (size + 3) & ~qsizetype(3);
        return raw;
    }

private:
    const QByteArray& m_bytes;
    qsizetype m_position = 4; // after the size of what follows
    bool m_valid = true;
};

void appendInt32(QByteArray& bytes, qint32 value)
{
    char raw[4];
    qToLittleEndian(value, raw);
    bytes.append(raw, 4);
}

// A string with its length, padded as a pickle pads it.
void appendString(QByteArray& bytes, const QByteArray& lengthAndText)
{
    bytes.append(lengthAndText);
    bytes.append((4 - lengthAndText.size() % 4) % 4, '\0');
}

QByteArray command(quint8 id, const QByteArray& payload)
{
    QByteArray bytes;
    char size[2];
    qToLittleEndian(quint16(payload.size() + 1), size);
    bytes.append(size, 2).append(char(id)).append(payload);
    return bytes;
}

// A tab's page as the first and only one of its history: its address and title stay; its saved page
// state (form values, scroll position, the frames inside), referrer and posted data go, and the
// address it was first requested at becomes the one it shows.
std::optional<QByteArray> onlyPage(const QByteArray& navigation)
{
    PickleReader reader(navigation);
    const qint32 tab = reader.int32();
    reader.int32(); // its place in the tab's history
    const QByteArray url = reader.string();
    const QByteArray title = reader.string(2);
    reader.string(); // page state
    const qint32 transition = reader.int32();
    const qint32 typeMask = reader.int32();
    reader.string(); // referrer
    const qint32 referrerPolicy = reader.int32();
    reader.string(); // the address first requested
    if (!reader.valid() || reader.position() > navigation.size())
        return std::nullopt;
    constexpr qint32 hasPostData = 1;
    QByteArray body;
    appendInt32(body, tab);
    appendInt32(body, 0);
    appendString(body, url);
    appendString(body, title);
    appendInt32(body, 0);
    appendInt32(body, transition);
    appendInt32(body, typeMask & ~hasPostData);
    appendInt32(body, 0);
    appendInt32(body, referrerPolicy);
    appendString(body, url);
    body.append(navigation.mid(reader.position())); // user agent, time, status and the like
    if (body.size() + 4 >= std::numeric_limits<quint16>::max())
        return std::nullopt; // the address twice would not fit in a command
    QByteArray pickle;
    appendInt32(pickle, qint32(body.size()));
    return pickle + body;
}

struct Tab
{
    std::optional<qint32> window;
    bool pinned = false;
    bool closed = false;
    // Places in the tab's history; wide, so that no command's numbers can overflow them.
    qint64 selected = 0;
    std::map<qint64, QByteArray> navigations; // by their place
    QList<Command> kept;

    // The page the tab shows: the selected one, else the nearest after it, else the last.
    const QByteArray* current() const
    {
        if (navigations.empty())
            return nullptr;
        const auto found = navigations.lower_bound(selected);
        return found == navigations.end() ? &std::prev(found)->second : &found->second;
    }

    // The history from `from` on moves `by` places toward its start.
    void shift(qint64 from, qint64 by)
    {
        std::map<qint64, QByteArray> moved;
        for (auto& [index, navigation] : navigations)
            moved.emplace(index >= from ? index - by : index, std::move(navigation));
        navigations = std::move(moved);
    }

    void erase(qint64 from, qint64 to)
    {
        if (from >= to)
            return; // a count below one in a command
        navigations.erase(navigations.lower_bound(from), navigations.lower_bound(to));
    }
};

struct Window
{
    bool closed = false;
    QList<Command> kept;
};

// Follows the commands as the browser replays them, keeping what a pinned tab needs.
void replay(const Command& command, Tab& tab)
{
    const QByteArray& p = command.payload;
    const qint64 first = int32At(p, 4).value_or(0); // the number after the tab's id
    const qint64 second = int32At(p, 8).value_or(0);
    switch (command.id) {
    case SetTabWindow:
        tab.window = int32At(p, 0);
        break;
    case SetPinnedState:
        tab.pinned = p.size() > 4 && p.at(4) != 0;
        break;
    case TabClosed:
        tab.closed = true;
        return;
    case UpdateTabNavigation:
        if (const std::optional<qint32> index = int32At(p, 8))
            tab.navigations[*index] = p;
        return;
    case SetSelectedNavigationIndex:
        tab.selected = first;
        return;
    case TabNavigationPrunedFromBack:
        tab.erase(first, std::numeric_limits<qint64>::max());
        return;
    case TabNavigationPrunedFromFront:
        tab.erase(std::numeric_limits<qint64>::min(), first);
        tab.shift(first, first);
        tab.selected -= first;
        return;
    case TabNavigationPruned:
        tab.erase(first, first + second);
        tab.shift(first + second, second);
        return;
    default:
        break;
    }
    tab.kept.append(command);
}

} // namespace

namespace ChromiumSession {

std::optional<QByteArray> withOnlyPinnedTabs(const QByteArray& snss)
{
    const std::optional<qint32> version = int32At(snss, 4);
    constexpr qint32 plain = 1, plainWithMarker = 3; // 2 and 4 are encrypted
    if (!snss.startsWith("SNSS") || (version != plain && version != plainWithMarker))
        return std::nullopt;

    std::map<qint32, Tab> tabs;
    std::vector<qint32> tabOrder;
    std::map<qint32, Window> windows;
    std::vector<qint32> windowOrder;
    // The browser stops at the first command that does not fit; so does this.
    for (qsizetype at = 8; at + 3 <= snss.size();) {
        const quint16 size = qFromLittleEndian<quint16>(snss.constData() + at);
        if (size == 0 || at + 2 + size > snss.size())
            break;
        const Command command{quint8(snss.at(at + 2)), snss.mid(at + 3, size - 1)};
        at += 2 + size;
        const Subject subject = subjectOf(command.id);
        const std::optional<qint32> id = int32At(command.payload, subject.offset);
        if (subject.owner == Owner::None || !id)
            continue;
        if (subject.owner == Owner::Tab) {
            if (!tabs.contains(*id))
                tabOrder.push_back(*id);
            replay(command, tabs[*id]);
        } else {
            if (!windows.contains(*id))
                windowOrder.push_back(*id);
            Window& window = windows[*id];
            if (command.id == WindowClosed)
                window.closed = true;
            else
                window.kept.append(command);
        }
    }

    QByteArray windowCommands, tabCommands;
    QList<qint32> keptWindows;
    for (const qint32 id : tabOrder) {
        const Tab& tab = tabs.at(id);
        const bool open = tab.window && !(windows.contains(*tab.window) && windows.at(*tab.window).closed);
        const QByteArray* page = tab.current();
        const std::optional<QByteArray> navigation = page ? onlyPage(*page) : std::nullopt;
        if (!tab.pinned || tab.closed || !open || !navigation)
            continue;
        if (!keptWindows.contains(*tab.window))
            keptWindows.append(*tab.window);
        for (const Command& kept : tab.kept)
            tabCommands += command(kept.id, kept.payload);
        QByteArray selected;
        appendInt32(selected, id);
        appendInt32(selected, 0);
        tabCommands += command(SetSelectedNavigationIndex, selected);
        tabCommands += command(UpdateTabNavigation, *navigation);
    }
    if (keptWindows.isEmpty())
        return std::nullopt;
    for (const qint32 id : windowOrder) {
        if (keptWindows.contains(id)) {
            for (const Command& kept : windows.at(id).kept)
                windowCommands += command(kept.id, kept.payload);
        }
    }
    QByteArray file = snss.left(8) + windowCommands + tabCommands;
    if (version == plainWithMarker)
        file += command(InitialStateMarker, {});
    return file;
}

} // namespace ChromiumSession
