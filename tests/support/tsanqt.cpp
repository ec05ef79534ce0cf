// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

// Tells ThreadSanitizer what the global thread pool puts in order. Qt isn't instrumented: without
// this, everything that is handed to a pool job, or comes back from it, looks like a race. The
// programs' own calls of these functions of Qt are bound here, note the order and go on to Qt.

#include <QFutureInterface>
#include <QRunnable>
#include <QThreadPool>
#include <QtConcurrentMap>

#include <dlfcn.h>

extern "C" void __tsan_acquire(void *address);
extern "C" void __tsan_release(void *address);

namespace {

/// Qt's own function of that name.
template<typename Function>
Function original(const char *symbol)
{
    return reinterpret_cast<Function>(dlsym(RTLD_NEXT, symbol));
}

/// What all copies of one future share: the pointer behind the virtual table.
void *sharedPart(const QFutureInterfaceBase *future)
{
    return reinterpret_cast<void *const *>(future)[1];
}

class OrderedRunnable : public QRunnable
{
public:
    explicit OrderedRunnable(QRunnable *runnable)
        : m_runnable(runnable)
    {}
    void run() override
    {
        __tsan_acquire(this);
        const bool isOwned = m_runnable->autoDelete();
        m_runnable->run();
        if (isOwned)
            delete m_runnable;
        __tsan_release(&doneKey);
    }

    static char doneKey;

private:
    QRunnable *const m_runnable;
};

char OrderedRunnable::doneKey;

// What a map's workers do comes after its start and before its end, but not one after the other.
char mapStartKey;
char mapEndKey;

} // namespace

void QThreadPool::start(QRunnable *runnable, int priority)
{
    static const auto start =
        original<void (*)(QThreadPool *, QRunnable *, int)>("_ZN11QThreadPool5startEP9QRunnablei");
    auto *ordered = new OrderedRunnable(runnable);
    __tsan_release(ordered);
    __tsan_release(&mapStartKey);
    start(this, ordered, priority);
}

void QThreadPool::start(std::function<void()> function, int priority)
{
    start(QRunnable::create(std::move(function)), priority);
}

bool QThreadPool::waitForDone(int milliseconds)
{
    static const auto wait =
        original<bool (*)(QThreadPool *, int)>("_ZN11QThreadPool11waitForDoneEi");
    const bool isDone = wait(this, milliseconds);
    __tsan_acquire(&OrderedRunnable::doneKey);
    return isDone;
}

void QFutureInterfaceBase::reportResultsReady(int begin, int end)
{
    static const auto report = original<void (*)(QFutureInterfaceBase *, int, int)>(
        "_ZN20QFutureInterfaceBase18reportResultsReadyEii");
    __tsan_release(sharedPart(this));
    report(this, begin, end);
}

void QFutureInterfaceBase::reportFinished()
{
    static const auto report =
        original<void (*)(QFutureInterfaceBase *)>("_ZN20QFutureInterfaceBase14reportFinishedEv");
    __tsan_release(sharedPart(this));
    report(this);
}

void QFutureInterfaceBase::waitForResult(int index)
{
    static const auto wait = original<void (*)(QFutureInterfaceBase *, int)>(
        "_ZN20QFutureInterfaceBase13waitForResultEi");
    wait(this, index);
    __tsan_acquire(sharedPart(this));
}

void QFutureInterfaceBase::waitForFinished()
{
    static const auto wait =
        original<void (*)(QFutureInterfaceBase *)>("_ZN20QFutureInterfaceBase15waitForFinishedEv");
    wait(this);
    __tsan_acquire(sharedPart(this));
    __tsan_acquire(&mapEndKey);
}

bool QFutureInterfaceBase::derefT() const
{
    static const auto deref =
        original<bool (*)(const QFutureInterfaceBase *)>("_ZNK20QFutureInterfaceBase6derefTEv");
    void *const shared = sharedPart(this);
    __tsan_release(shared);
    const bool isHeld = deref(this);
    if (!isHeld)
        __tsan_acquire(shared);
    return isHeld;
}

void QtConcurrent::BlockSizeManagerV2::timeBeforeUser()
{
    static const auto note = original<void (*)(BlockSizeManagerV2 *)>(
        "_ZN12QtConcurrent18BlockSizeManagerV214timeBeforeUserEv");
    note(this);
    __tsan_acquire(&mapStartKey);
}

void QtConcurrent::BlockSizeManagerV2::timeAfterUser()
{
    static const auto note = original<void (*)(BlockSizeManagerV2 *)>(
        "_ZN12QtConcurrent18BlockSizeManagerV213timeAfterUserEv");
    __tsan_release(&mapEndKey);
    note(this);
}
