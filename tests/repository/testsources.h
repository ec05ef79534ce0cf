// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#pragma once

#include "support/memorysource.h"

#include <QSemaphore>
#include <QThread>

#include <functional>

namespace nk::pm::test {

/// Writes down what a repository asks of it.
class LoggedSource : public MemorySource
{
public:
    LoggedSource(const QString &name, int priority, QStringList *log)
        : MemorySource(priority)
        , m_name(name)
        , m_log(log)
    {
        catalogue.package("shared", name);
        catalogue.package("only " + name);
    }

    std::unique_ptr<PackageAccessor> getAccessor() override
    {
        *m_log << "getAccessor " + m_name;
        return MemorySource::getAccessor();
    }
    void persist() override { *m_log << "persist " + m_name; }
    void update() override
    {
        *m_log << "update " + m_name;
        if (onUpdate)
            onUpdate();
    }
    int listeners() const { return receivers(SIGNAL(updateRequired())); }

    std::function<void()> onUpdate;

private:
    const QString m_name;
    QStringList *const m_log;
};

/// A source whose first snapshot takes as long to read as the test wants.
class SlowSource : public MemorySource
{
public:
    struct Gate
    {
        QSemaphore entered;
        QSemaphore open;
        QSemaphore gone;
        QThread *goneOn = nullptr;
    };

    std::unique_ptr<PackageAccessor> getAccessor() override
    {
        auto gate = m_isFirst ? m_gate : nullptr;
        m_isFirst = false;
        return std::make_unique<Accessor>(catalogue, gate);
    }
    QSharedPointer<Gate> gate() const { return m_gate; }

private:
    class Accessor : public MemoryAccessor
    {
    public:
        Accessor(const MemoryCatalogue &catalogue, const QSharedPointer<Gate> &gate)
            : MemoryAccessor(catalogue, QSharedPointer<MemoryLog>::create())
            , m_gate(gate)
        {}
        ~Accessor() override
        {
            if (!m_gate)
                return;
            m_gate->goneOn = QThread::currentThread();
            m_gate->gone.release();
        }
        void load() override
        {
            if (!m_gate)
                return;
            m_gate->entered.release();
            m_gate->open.acquire();
        }

    private:
        const QSharedPointer<Gate> m_gate;
    };

    const QSharedPointer<Gate> m_gate = QSharedPointer<Gate>::create();
    bool m_isFirst = true;
};

} // namespace nk::pm::test
