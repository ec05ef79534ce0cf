// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#include "query/rowchanges.h"

#include "support/columns.h"

#include <QRandomGenerator>
#include <QtTest>

#include <algorithm>
#include <numeric>

using namespace nk::pm;
using namespace nk::pm::test;

namespace {

using Rows = QVector<PackageNode *>;
using Changes = std::optional<std::vector<RowChange>>;

/// A node that is never looked into: rows are compared by address alone.
PackageNode *node(int number)
{
    return reinterpret_cast<PackageNode *>(quintptr(number + 1) * 64);
}

Rows rowsOf(const QVector<int> &numbers)
{
    Rows rows;
    for (int number : numbers)
        rows.append(node(number));
    return rows;
}

/// A row for each of \a digits to the base 36, in which they are told, too.
Rows rowsOf(const QString &digits)
{
    Rows rows;
    for (const QChar digit : digits)
        rows.append(node(QString(digit).toInt(nullptr, 36)));
    return rows;
}

QString toString(const RowChange &change)
{
    if (const auto *remove = std::get_if<RemoveRows>(&change))
        return QString("remove %1 %2").arg(remove->first).arg(remove->last);
    if (const auto *move = std::get_if<MoveRow>(&change))
        return QString("move %1 %2").arg(move->from).arg(move->to);
    const auto &insert = std::get<InsertRows>(change);
    QString text = QString("insert %1").arg(insert.first);
    for (PackageNode *row : insert.rows)
        text += ' ' + QString::number(reinterpret_cast<quintptr>(row) / 64 - 1, 36);
    return text;
}

QString toString(const Changes &changes)
{
    if (!changes)
        return "stuck";
    QStringList texts;
    for (const RowChange &change : *changes)
        texts.append(toString(change));
    return texts.join(", ");
}

Rows applied(Rows rows, const std::vector<RowChange> &changes)
{
    for (const RowChange &change : changes) {
        if (const auto *remove = std::get_if<RemoveRows>(&change)) {
            rows.remove(remove->first, remove->last - remove->first + 1);
        } else if (const auto *move = std::get_if<MoveRow>(&change)) {
            rows.move(move->from, move->to);
        } else {
            const auto &insert = std::get<InsertRows>(change);
            for (int i = 0; i < insert.rows.size(); ++i)
                rows.insert(insert.first + i, insert.rows.at(i));
        }
    }
    return rows;
}

using Ranges = QVector<QPair<int, int>>;

void extend(Ranges &ranges, int position)
{
    if (ranges.isEmpty() || qAbs(position - ranges.last().second) > 1)
        ranges.append({position, position});
    else
        ranges.last().second = position;
}

/// Where a row is to go next, told as plainly as it can be: one scan over all rows.
MoveRow nextMove(const Rows &work, const QHash<PackageNode *, int> &target)
{
    int from = 0;
    int to = 0;
    for (int i = 0; i < work.size(); ++i) {
        const int t = target.value(work.at(i));
        if (t != i && qAbs(i - t) > qAbs(from - to)) {
            from = i;
            to = t;
        }
    }
    return {from, to};
}

/// The changes by the plain method, quadratic in the number of rows.
Changes slowRowChanges(const Rows &oldRows, const Rows &newRows)
{
    std::vector<RowChange> changes;
    Rows work = oldRows;
    Ranges ranges;
    for (int i = oldRows.size() - 1; i >= 0; --i) {
        if (!newRows.contains(oldRows.at(i)))
            extend(ranges, i);
    }
    for (const auto &range : qAsConst(ranges)) {
        const auto [first, last] = std::minmax(range.first, range.second);
        changes.push_back(RemoveRows{first, last});
        work.remove(first, last - first + 1);
    }
    ranges.clear();
    QHash<PackageNode *, int> target;
    for (int i = 0; i < newRows.size(); ++i) {
        target.insert(newRows.at(i), i);
        if (oldRows.contains(newRows.at(i)))
            continue;
        extend(ranges, i);
        work.insert(i, newRows.at(i));
    }
    for (const auto &[first, last] : qAsConst(ranges))
        changes.push_back(InsertRows{first, newRows.mid(first, last - first + 1)});
    for (;;) {
        const auto [from, to] = nextMove(work, target);
        if (from == to)
            return changes;
        if (from < 0 || to <= 0)
            return std::nullopt;
        changes.push_back(MoveRow{from, to});
        work.move(from, to);
    }
}

QVector<int> ordered(int size)
{
    QVector<int> numbers(size);
    std::iota(numbers.begin(), numbers.end(), 0);
    return numbers;
}

QVector<int> shuffled(QVector<int> numbers, QRandomGenerator &random)
{
    std::shuffle(numbers.begin(), numbers.end(), random);
    return numbers;
}

/// Some of the numbers, in their order.
QVector<int> some(const QVector<int> &numbers, int percent, QRandomGenerator &random)
{
    QVector<int> chosen;
    for (int number : numbers) {
        if (random.bounded(100) < percent)
            chosen.append(number);
    }
    return chosen;
}

/// \a numbers after \a count moves of single rows, none of them to the top.
QVector<int> disturbed(QVector<int> numbers, int count, QRandomGenerator &random)
{
    for (; numbers.size() > 1 && count > 0; --count)
        numbers.move(random.bounded(numbers.size()), 1 + random.bounded(numbers.size() - 1));
    return numbers;
}

} // namespace

class TestRowChanges : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void examples_data();
    void examples();
    void agreesWithPlainMethod_data();
    void agreesWithPlainMethod();
    void allSmallPermutations();
    void manyBlocks();
};

void TestRowChanges::examples_data()
{
    Columns<QString, QString, QString>("shown", "wanted", "expected")
        .row(
            "removals, insertions, moves", "abcde", "bxda",
            "remove 4 4, remove 2 2, insert 1 x, move 0 3, move 0 1")
        .row("all go", "abc", "", "remove 0 2")
        .row("all new", "", "xyz", "insert 0 x y z")
        .row("filter on, from the end", "abcdef", "ade", "remove 5 5, remove 1 2")
        .row("filter off, from the start", "ade", "abcdef", "insert 1 b c, insert 5 f")
        .row("no way to the top", "bca", "abc", "stuck")
        .row("swap of two goes down", "ba", "ab", "move 0 1")
        .row("topmost of the furthest", "abcd", "badc", "move 0 1, move 2 3")
        .row("a node held twice", "abc", "aba", "stuck")
        .row("a node held twice, nothing gone", "a", "aa", "stuck");
}

void TestRowChanges::examples()
{
    QFETCH(QString, shown);
    QFETCH(QString, wanted);
    QTEST(toString(rowChanges(rowsOf(shown), rowsOf(wanted))), "expected");
}

void TestRowChanges::agreesWithPlainMethod_data()
{
    // Kept is the percentage of the rows that each of the two lists has; negative moves: any order.
    Columns<int, int, int, int>("size", "kept", "moves", "rounds")
        .row("tiny, any order", 6, 70, -1, 3000)
        .row("small, any order", 25, 80, -1, 1000)
        .row("small, some moved", 40, 80, 6, 2000)
        .row("filters only", 120, 50, 0, 500)
        .row("more than one block, some moved", 90, 95, 25, 500)
        .row("hardly anything in common", 60, 15, 5, 500);
}

void TestRowChanges::agreesWithPlainMethod()
{
    QFETCH(int, size);
    QFETCH(int, kept);
    QFETCH(int, moves);
    QFETCH(int, rounds);
    QRandomGenerator random(20260);
    int ways = 0;
    for (int round = 0; round < rounds; ++round) {
        const QVector<int> all = ordered(size);
        const QVector<int> other =
            moves < 0 ? shuffled(all, random) : disturbed(all, moves, random);
        const Rows oldRows = rowsOf(some(all, kept, random));
        const Rows newRows = rowsOf(some(other, kept, random));
        const Changes changes = rowChanges(oldRows, newRows);
        QCOMPARE(toString(changes), toString(slowRowChanges(oldRows, newRows)));
        if (!changes)
            continue;
        QCOMPARE(applied(oldRows, *changes), newRows);
        ++ways;
    }
    QVERIFY2(ways > rounds / 20, "hardly any of the lists could be changed");
}

void TestRowChanges::allSmallPermutations()
{
    for (int size = 1; size <= 7; ++size) {
        QVector<int> order = ordered(size);
        const Rows wanted = rowsOf(order);
        do {
            const Rows shown = rowsOf(order);
            const Changes changes = rowChanges(shown, wanted);
            QCOMPARE(toString(changes), toString(slowRowChanges(shown, wanted)));
            if (changes)
                QCOMPARE(applied(shown, *changes), wanted);
        } while (std::next_permutation(order.begin(), order.end()));
    }
}

/// Long enough that blocks fill, split and run empty.
void TestRowChanges::manyBlocks()
{
    const int size = 3000;
    const QVector<int> order = ordered(size);
    const Rows wanted = rowsOf(order);
    QVector<int> turned = order;
    std::rotate(turned.begin(), turned.begin() + size / 2, turned.end());
    QVector<int> reversed = order;
    std::reverse(reversed.begin(), reversed.end());
    QRandomGenerator random(7);
    QVector<int> mixed = order;
    std::shuffle(mixed.begin() + 1, mixed.end(), random);
    for (const QVector<int> &start : {turned, reversed, mixed, disturbed(order, 400, random)}) {
        const Rows shown = rowsOf(start);
        const Changes changes = rowChanges(shown, wanted);
        QVERIFY(toString(changes) == toString(slowRowChanges(shown, wanted)));
        if (changes)
            QVERIFY(applied(shown, *changes) == wanted);
    }
}

QTEST_GUILESS_MAIN(TestRowChanges)
#include "tst_rowchanges.moc"
