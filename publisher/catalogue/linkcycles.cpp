// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#include "catalogue/linkcycles.h"

#include <QHash>

namespace nk::pm::publisher {

namespace {

/// A depth-first walk with a stack of its own. A link that leads back onto the path that is just
/// being walked closes a cycle.
class CycleSearch
{
public:
    CycleSearch(const QVector<CatalogueLink> &links, LinkType type)
        : m_links(links)
    {
        for (int i = 0; i < links.size(); ++i) {
            if (links.at(i).info.type == type)
                m_outgoing[links.at(i).info.from].append(i);
        }
    }

    void walkFrom(const QString &start)
    {
        enter(start);
        while (!m_path.isEmpty()) {
            Step &step = m_path.last();
            const QVector<int> links = m_outgoing.value(step.node);
            if (step.next == links.size()) {
                m_state[step.node] = Done;
                m_path.removeLast();
            } else {
                follow(m_links.at(links.at(step.next++)));
            }
        }
    }

    QVector<LinkCycle> cycles;

private:
    enum State { Unseen, OnPath, Done };

    struct Step
    {
        QString node;
        int next = 0; // position in the node's outgoing links
    };

    void enter(const QString &node)
    {
        if (m_state.value(node, Unseen) != Unseen)
            return;
        m_state[node] = OnPath;
        m_path.append({node});
    }

    void follow(const CatalogueLink &link)
    {
        if (m_state.value(link.info.to, Unseen) == OnPath)
            cycles.append({link.file, pathFrom(link.info.to)});
        enter(link.info.to);
    }

    QStringList pathFrom(const QString &node) const
    {
        QStringList path{node};
        for (int i = m_path.size() - 1; m_path.at(i).node != node; --i)
            path.insert(1, m_path.at(i).node);
        path.append(node);
        return path;
    }

    const QVector<CatalogueLink> &m_links;
    QHash<QString, QVector<int>> m_outgoing; // link positions by the node they leave
    QHash<QString, State> m_state;
    QVector<Step> m_path;
};

} // namespace

QVector<LinkCycle> findCycles(const QVector<CatalogueLink> &links, LinkType type)
{
    CycleSearch search(links, type);
    for (const CatalogueLink &link : links)
        search.walkFrom(link.info.from);
    return search.cycles;
}

} // namespace nk::pm::publisher
