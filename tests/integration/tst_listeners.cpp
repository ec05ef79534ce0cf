// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#include "index/packageindex.h"
#include "index/packageindexnode.h"
#include "install/filestore.h"
#include "install/storecare.h"
#include "query/categorylistmodel.h"
#include "query/haskeyword.h"
#include "query/hasmanifestfield.h"
#include "query/keyword.h"
#include "query/keywordsuggestionmodel.h"
#include "query/manifestbooleanfield.h"
#include "query/manifestfilefield.h"
#include "query/manifestsizefield.h"
#include "query/manifeststringfield.h"
#include "query/matcheskeywordsearch.h"
#include "query/modeltools.h"
#include "query/packagedata.h"
#include "query/packagelistmodel.h"
#include "query/packagematchergroup.h"
#include "query/sortbyintegerfield.h"
#include "references/packagereference.h"
#include "references/packagereferencefield.h"
#include "repository/ipackageprovider.h"
#include "repository/packagerepository.h"
#include "repository/repository.h"
#include "sources/couchdbpackagesource.h"
#include "sources/localpackagesource.h"
#include "sources/packageserver.h"
#include "support/ledgerbuilder.h"
#include "support/ledgerserver.h"
#include "support/memorysource.h"
#include "support/scopeddatalocation.h"
#include "support/testfiles.h"

#include <QAbstractItemModelTester>
#include <QDirIterator>
#include <QMetaMethod>
#include <QQmlPropertyMap>
#include <QThreadPool>
#include <QtTest>

using namespace nk::pm;
using namespace nk::pm::test;

namespace {

class Provider : public QObject, public IPackageProvider
{
    Q_OBJECT
    Q_INTERFACES(nk::pm::IPackageProvider)

public:
    explicit Provider(PackageRepository *repository)
        : m_repository(repository)
    {}
    PackageRepository *packageRepository() override { return m_repository; }
    PackageReference *packageReference(const QString &id) override
    {
        return m_repository ? m_repository->packageReference(id) : nullptr;
    }

private:
    QPointer<PackageRepository> m_repository;
};

class Listener : public QObject
{
    Q_OBJECT

public:
    std::function<void()> act;
    bool hasHeard = false;

public Q_SLOTS:
    void hear()
    {
        if (!std::exchange(hasHeard, true))
            act();
    }
};

/// What stands around the object that emits. Whatever a listener may delete is on the heap.
struct World
{
    World()
    {
        source->catalogue.word("oak", "Oak", KeywordType::Category).word("elm", "Oaken");
        for (const QString &name : {"a0", "b3", "c1", "d2", "e5", "f4"}) {
            const QString id = name.left(1);
            source->catalogue.package(
                id, "t", {{"title", id}, {"rank", name.mid(1).toInt()}, {"late", name}});
            source->catalogue.linked(id + " is_a oak");
        }
        field->setName("title");
        lateField->setName("late");
        sorter->setName("rank");
        matcher->accept("a b c d e f");
        repository->addSource(source);
    }
    ~World()
    {
        delete owner;
        delete list;
        deleteParts();
        delete provider;
        delete repository;
        delete source;
        QThreadPool::globalInstance()->waitForDone();
    }
    void deleteParts() const
    {
        delete matcher;
        delete field;
        delete lateField;
        delete sorter;
        delete otherProvider;
        delete manager;
    }

    void publish(const QString &type = "t") const
    {
        for (PackageInfo &package : source->catalogue.packages)
            package.type = type;
        const auto before = repository->packageIndex();
        source->publish();
        QVERIFY(QTest::qWaitFor(
            [&] { return !repository || repository->packageIndex() != before; }, 60'000));
    }
    /// A reference goes with its repository only.
    void deleteSender() const
    {
        if (qobject_cast<PackageReference *>(owner))
            delete repository;
        else
            delete owner;
    }
    void settle() const
    {
        if (owner)
            test::settle(*owner);
        QThreadPool::globalInstance()->waitForDone();
    }
    void accept(const QString &ids) const
    {
        if (matcher)
            matcher->accept(ids);
        settle();
    }

    ScopedDataLocation location;
    QPointer<MemorySource> source = new MemorySource;
    QPointer<PackageRepository> repository =
        new PackageRepository(PackageRepository::PersistSources);
    QPointer<Provider> provider = new Provider(repository);
    QPointer<Provider> otherProvider = new Provider(repository);
    QPointer<IdMatcher> matcher = new IdMatcher;
    QPointer<ManifestStringField> field = new ManifestStringField;
    QPointer<ManifestStringField> lateField = new ManifestStringField;
    QPointer<SortByIntegerField> sorter = new SortByIntegerField;
    QPointer<PackageListModel> list; ///< somebody who uses the sender
    QPointer<QObject> owner;  ///< of the sender: who is deleted, and whose operations are called
    QPointer<QObject> sender; ///< mostly the same
    QPointer<QNetworkAccessManager> manager = new QNetworkAccessManager;
    std::unique_ptr<HttpTestServer> http;
    std::unique_ptr<LedgerServer> server;
};

using Deed = std::function<void(World &)>;

/// A public class: how to make one, and what has it emit its signals.
struct Kind
{
    const QMetaObject *meta;
    std::function<QObject *(World &)> make;
    /// By the signal's name; what isn't here comes of changes of all properties.
    QHash<QByteArray, Deed> provoke{};
    /// What can be called beside the properties.
    Deed operations = [](World &) {};
    /// Asked when all is quiet again.
    std::function<bool(World &)> isRight = [](World &) { return true; };
    /// Where it isn't the object itself.
    std::function<QObject *(World &)> sender{};
};

/// In place of what has a signal emitted that the class never emits.
const Deed never{};

/// \a deed with the object as it is.
template<typename Object, typename Function>
auto with(Function deed)
{
    return [deed](World &world) { return deed(static_cast<Object &>(*world.owner), world); };
}

template<typename Object>
void clearFields(Object &object)
{
    auto list = object.manifestFields();
    list.clear(&list);
}

/// Another value than \a value for \a property.
QVariant otherValue(const QMetaProperty &property, const QVariant &value, const World &world)
{
    const QByteArray name = property.name();
    if (name == "packageProvider") {
        const bool isFirst = value.value<QObject *>() == world.provider;
        return QVariant::fromValue<QObject *>(isFirst ? world.otherProvider : world.provider);
    }
    if (name == "packageReference" && world.repository) {
        const auto *reference = value.value<PackageReference *>();
        return QVariant::fromValue(
            world.repository->packageReference(reference && reference->id() == "c" ? "b" : "c"));
    }
    if (property.isEnumType())
        return 1 - value.toInt();
    switch (int(value.type())) {
    case QVariant::String:
        return value.toString() + 'x';
    case QVariant::Int:
        return value.toInt() + 1;
    case QVariant::Bool:
        return !value.toBool();
    case QVariant::SizeF:
        return value.toSizeF() + QSizeF(1, 1);
    case QVariant::StringList:
        return value.toStringList() << "t";
    default:
        return QVariant(property.userType(), nullptr);
    }
}

void changeAll(World &world, bool andBack)
{
    const QPointer<QObject> object = world.owner;
    for (int i = 1; object && i < object->metaObject()->propertyCount(); ++i) {
        const QMetaProperty property = object->metaObject()->property(i);
        if (!property.isWritable())
            continue;
        const QVariant value = property.read(object);
        property.write(object, otherValue(property, value, world));
        if (object && andBack)
            property.write(object, value);
    }
}

const Deed changeOnce = [](World &world) { changeAll(world, false); };

QString shown(const QAbstractItemModel &model)
{
    return ids(model);
}

QString shown(const Keyword &keyword)
{
    return keyword.displayString();
}

/// Whether the sender shows what a new one with the same properties shows. Once its provider is
/// gone, it goes on with the repository that it had.
template<typename Object>
bool isLikeATwin(World &world)
{
    if (!world.owner->property("packageProvider").value<QObject *>())
        return true;
    Object twin;
    for (int i = 1; i < twin.metaObject()->propertyCount(); ++i) {
        const QMetaProperty property = twin.metaObject()->property(i);
        if (property.isWritable())
            property.write(&twin, property.read(world.owner));
    }
    settle(twin);
    return shown(twin) == shown(static_cast<Object &>(*world.owner));
}

template<typename Model>
Kind model(const QHash<QByteArray, Deed> &provoke)
{
    Kind kind{&Model::staticMetaObject, {}, provoke};
    for (const char *name : {"modelAboutToBeReset", "modelReset"})
        kind.provoke.insert(name, [](World &world) { world.publish(); });
    kind.make = [](World &world) {
        auto *model = new Model;
        new QAbstractItemModelTester(
            model, QAbstractItemModelTester::FailureReportingMode::QtTest, model);
        world.publish();
        model->setPackageProvider(world.provider);
        return model;
    };
    kind.operations = changeOnce;
    kind.isRight = isLikeATwin<Model>;
    return kind;
}

Kind packageListModel()
{
    const Deed remove = [](World &world) { world.accept("a d e"); };
    const Deed insert = [](World &world) {
        world.accept("a d e");
        world.accept("a b c d e f");
    };
    const Deed move = with<PackageListModel>(
        [](PackageListModel &list, World &world) { list.setSorter(world.sorter); });
    const Deed declare = with<PackageListModel>(
        [](PackageListModel &list, World &world) { addFields(list, {world.lateField}); });
    Kind kind = model<PackageListModel>(
        {{"rowsAboutToBeRemoved", remove},
         {"rowsRemoved", remove},
         {"rowsAboutToBeInserted", insert},
         {"rowsInserted", insert},
         {"rowsAboutToBeMoved", move},
         {"rowsMoved", move},
         {"countChanged", remove},
         {"manifestFieldsChanged", declare},
         {"matcherChanged", never},
         {"sorterChanged", never}});
    kind.make = [make = kind.make](World &world) {
        auto *list = static_cast<PackageListModel *>(make(world));
        addFields(*list, {world.field});
        list->setMatcher(world.matcher);
        return list;
    };
    kind.operations = with<PackageListModel>([](PackageListModel &list, World &world) {
        list.setMatcher(world.matcher);
        clearFields(list);
        addFields(list, {world.lateField});
        list.componentComplete();
    });
    return kind;
}

Kind suggestionModel()
{
    Kind kind = model<KeywordSuggestionModel>({});
    kind.make = [make = kind.make](World &world) {
        auto *suggestions = static_cast<KeywordSuggestionModel *>(make(world));
        suggestions->setSearchString("oa");
        return suggestions;
    };
    kind.provoke.insert(
        "countChanged", with<KeywordSuggestionModel>([](auto &suggestions, World &) {
            suggestions.setSearchString("oaken");
        }));
    return kind;
}

Kind packageData()
{
    Kind kind{&PackageData::staticMetaObject, {}, {{"manifestFieldsChanged", never}}};
    kind.make = [](World &world) {
        auto *data = new PackageData;
        addFields(*data, {world.field, world.lateField});
        data->componentComplete();
        world.publish();
        data->setPackageReference(world.repository->packageReference("a"));
        return data;
    };
    kind.operations = with<PackageData>([](PackageData &data, World &world) {
        data.setPackageReference(world.repository->packageReference("c"));
        clearFields(data);
        addFields(data, {world.lateField, world.field, world.lateField});
        data.componentComplete();
    });
    kind.isRight = with<PackageData>([](PackageData &data, World &world) {
        const PackageReference *reference = data.packageReference();
        for (const auto &field : {world.field, world.lateField}) {
            if (reference && field
                && data.manifest()->value(field->name()) != field->read(reference->node()))
                return false;
        }
        return true;
    });
    return kind;
}

Kind packageDataMap()
{
    Kind kind = packageData();
    kind.meta = &QQmlPropertyMap::staticMetaObject;
    kind.sender = with<PackageData>([](PackageData &data, World &) { return data.manifest(); });
    kind.provoke = {
        {"valueChanged", with<PackageData>([](PackageData &data, World &) {
             data.manifest()->setProperty("title", "by a script");
             data.componentComplete();
         })},
        {"title", with<PackageData>([](PackageData &data, World &world) {
             data.setPackageReference(world.repository->packageReference("b"));
         })}};
    return kind;
}

Kind keyword()
{
    Kind kind{&Keyword::staticMetaObject, {}, {}};
    kind.make = [](World &world) {
        world.publish();
        auto *keyword = new Keyword;
        keyword->setKeywordId("oak");
        keyword->setPackageProvider(world.provider);
        return keyword;
    };
    kind.provoke.insert("packageProviderChanged", never);
    kind.provoke.insert("keywordChanged", [](World &world) { world.publish(); });
    kind.isRight = isLikeATwin<Keyword>;
    return kind;
}

/// A matcher, a sorter or a field, with somebody who uses it.
template<typename Part>
Kind part(const QHash<QByteArray, Deed> &provoke = {{"updateRequested", changeOnce}})
{
    Kind kind{&Part::staticMetaObject, {}, provoke};
    kind.make = [](World &world) {
        auto *part = new Part;
        world.publish();
        world.list = new PackageListModel;
        world.list->setPackageProvider(world.provider);
        if constexpr (std::is_base_of_v<PackageMatcher, Part>)
            world.list->setMatcher(part);
        else if constexpr (std::is_base_of_v<PackageSorter, Part>)
            world.list->setSorter(part);
        else
            addFields(*world.list, {part});
        return part;
    };
    return kind;
}

Kind matcherGroup()
{
    Kind kind = part<PackageMatcherGroup>();
    kind.make = [make = kind.make](World &world) {
        auto *group = static_cast<PackageMatcherGroup *>(make(world));
        group->addMatcher(world.matcher);
        return group;
    };
    const auto addMember = with<PackageMatcherGroup>(
        [](PackageMatcherGroup &group, World &) { group.addMatcher(new HasKeyword(&group)); });
    kind.provoke = {
        {"updateRequested", [](World &world) { world.accept("a d e"); }},
        {"matchRequirementChanged", changeOnce},
        {"matchersChanged", addMember}};
    kind.operations = with<PackageMatcherGroup>([](PackageMatcherGroup &group, World &world) {
        group.removeMatcher(world.matcher);
        group.addMatcher(world.matcher);
    });
    return kind;
}

Kind repository()
{
    Kind kind{&PackageRepository::staticMetaObject, [](World &world) -> QObject * {
                  world.repository->packageReference("a");
                  return world.repository;
              }};
    kind.provoke.insert("packageIndexChanged", [](World &world) { world.publish(); });
    kind.operations = with<PackageRepository>([](PackageRepository &repository, World &world) {
        repository.removeSource(world.source);
        repository.addSource(world.source);
        repository.scheduleSourceUpdate();
        repository.persistSources();
        repository.packageReference("b");
    });
    return kind;
}

/// The one of "a", which is asked to update to each new index before that reaches it by itself.
Kind reference()
{
    Kind kind{&PackageReference::staticMetaObject, [](World &world) -> QObject * {
                  world.publish();
                  QObject::connect(
                      world.repository, &PackageRepository::packageIndexChanged, world.repository,
                      [&world] {
                          auto *repository = world.repository.data();
                          QMetaObject::invokeMethod(repository->packageReference("a"), "update");
                      });
                  PackageReference *reference = world.repository->packageReference("a");
                  world.source->installer("a")->succeed();
                  return reference;
              }};
    const Deed publishOther = [](World &world) { world.publish("other"); };
    kind.provoke = {
        {"typeChanged", publishOther},
        {"statusChanged", publishOther},
        {"updated", [](World &world) {
             world.source->log().installers.clear();
             world.publish();
             world.source->log().installers.first()->succeed();
         }}};
    return kind;
}

/// The root of a small tree; beside it a tree that ends in a slot of its own, called by the
/// first.
Kind installer()
{
    Kind kind{&MemoryInstaller::staticMetaObject, [](World &world) -> QObject * {
                  auto *root = new MemoryInstaller("a", InstallLocation());
                  root->addChild(std::make_unique<MemoryInstaller>("b", InstallLocation()));
                  auto *other = new MemoryInstaller("c", InstallLocation());
                  other->setParent(world.manager);
                  QObject::connect(root, &PackageInstaller::statusChanged, other, [other] {
                      other->succeed();
                      QCOMPARE(other->status(), PackageInstaller::Succeeded);
                  });
                  return root;
              }};
    kind.provoke.insert("statusChanged", [](World &world) {
        auto *root = static_cast<MemoryInstaller *>(world.owner.data());
        root->succeed();
        root->findChild<MemoryInstaller *>()->succeed();
    });
    kind.operations = with<MemoryInstaller>([](MemoryInstaller &root, World &) {
        root.succeed();
        root.addChild(std::make_unique<MemoryInstaller>("d", InstallLocation()));
    });
    return kind;
}

void persistAndUpdate(World &world)
{
    auto *source = static_cast<PackageSource *>(world.owner.data());
    source->persist();
    source->update();
    source->getAccessor();
}

template<typename Make>
Kind source(const QMetaObject &meta, Make make, const Deed &provoke)
{
    Kind kind{&meta, [make](World &world) -> QObject * {
                  PackageSource *source = make(world);
                  world.repository->addSource(source);
                  return source;
              }};
    kind.provoke.insert("updateRequired", provoke);
    kind.operations = persistAndUpdate;
    return kind;
}

PackageSource *makeDatabase(World &world)
{
    world.http = std::make_unique<HttpTestServer>([](const HttpTestRequest &) {
        static int revision = 0;
        const QByteArray etag = "ETag: \"" + QByteArray::number(++revision) + "\"\r\n";
        return HttpTestAnswer::of(200, R"({"rows":[]})", etag);
    });
    return new CouchDBPackageSource(world.http->url("/db"), world.manager);
}

PackageSource *makeServer(World &world)
{
    world.server = std::make_unique<LedgerServer>();
    world.server->publish(LedgerBuilder().addLanguage("de").build(), "\"one\"");
    return new PackageServer(world.server->service());
}

void publishLedger(World &world)
{
    world.server->publish(LedgerBuilder().addLanguage("en").build(), "\"two\"");
    static_cast<PackageSource *>(world.owner.data())->update();
}

QObject *makeRequest(World &world)
{
    world.http = std::make_unique<HttpTestServer>(HttpTestAnswer::ok("body"));
    return new nk::GetRequest(QNetworkRequest(world.http->url()), world.manager);
}

QObject *makeService(World &world)
{
    return new nk::account::Service("uuid", QUrl("http://localhost/"), world.manager);
}

template<typename Object>
Kind plain()
{
    return {&Object::staticMetaObject, [](World &) -> QObject * { return new Object; }};
}

const QVector<Kind> &kinds()
{
    const Deed emitUpdate = with<PackageSorter>(
        [](PackageSorter &sorter, World &) { Q_EMIT sorter.updateRequested(); });
    const Deed enable = with<nk::account::Service>(
        [](nk::account::Service &service, World &) { service.enable(); });
    const Deed verify = with<StoreCare>([](StoreCare &care, World &) {
        writeFile(FileStore::instance()->filePath("0123456789abcdef0123456789abcdef"), "content");
        care.verify();
    });
    static const QVector<Kind> all{
        repository(),
        source(
            MemorySource::staticMetaObject, [](World &world) { return world.source.data(); },
            [](World &world) { world.source->publish(); }),
        source(
            LocalPackageSource::staticMetaObject,
            [](World &) { return new LocalPackageSource("/nowhere"); }, never),
        source(CouchDBPackageSource::staticMetaObject, makeDatabase, persistAndUpdate),
        source(PackageServer::staticMetaObject, makeServer, publishLedger),
        installer(),
        reference(),
        packageListModel(),
        model<CategoryListModel>({}),
        suggestionModel(),
        keyword(),
        packageData(),
        packageDataMap(),
        part<HasKeyword>(),
        part<HasManifestField>(),
        part<MatchesKeywordSearch>(),
        matcherGroup(),
        part<SortByIntegerField>({{"updateRequested", emitUpdate}}),
        part<ManifestField>(),
        part<ManifestStringField>(),
        part<ManifestBooleanField>(),
        part<ManifestSizeField>(),
        part<ManifestFileField>(),
        Kind{
            &StoreCare::staticMetaObject,
            [](World &) -> QObject * { return new StoreCare; },
            {{"progressed", verify}, {"finished", verify}},
            verify},
        plain<Repository>(),
        plain<PackageReferenceField>(),
        Kind{&nk::GetRequest::staticMetaObject, makeRequest, {{"finished", [](World &) {}}}},
        Kind{
            &nk::account::Service::staticMetaObject,
            makeService,
            {{"statusChanged", enable}},
            enable}};
    return all;
}

enum Action {
    DoNothing,
    DeleteRepository,
    DeleteSource,
    DeleteProvider,
    DeleteParts,
    RunEventLoop,
    DeleteSender, // the last two not while the sender is on its way out
    CallAgain,
};

const char *const actions[] = {
    "does nothing",
    "deletes the repository",
    "deletes the source",
    "deletes the provider",
    "deletes what the sender refers to",
    "runs an event loop",
    "deletes the sender",
    "calls all of the sender again",
};

/// Qt itself goes on with the sender after these: a listener can only have it deleted later.
const QByteArrayList touchedByQt{
    "rowsAboutToBeInserted", "rowsAboutToBeRemoved", "rowsAboutToBeMoved", "valueChanged"};

} // namespace

Q_DECLARE_METATYPE(const Kind *)

/// Each public signal of each public class, with a listener that does its worst.
class TestListeners : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void everyClassIsHere();
    void listener_data();
    void listener();

private:
    static void act(Action action, const Kind &kind, const QByteArray &signal, World &world);
};

void TestListeners::everyClassIsHere()
{
    QSet<QByteArray> here;
    for (const Kind &kind : kinds()) {
        for (const QMetaObject *meta = kind.meta; meta; meta = meta->superClass())
            here.insert(QByteArray(meta->className()).split(':').last());
    }
    // Without a signal of their own.
    here += {"Context", "Document", "LinkedDocument"};
    const QRegularExpression publicClass(R"(class NO?R?V?A?K_\w*EXPORT (\w+)[^;{]*\{\s*Q_OBJECT)");
    int found = 0;
    for (const char *folder : {"/src", "/platform"}) {
        QDirIterator header(
            NKPM_SOURCE_DIR + QString(folder), {"*.h"}, QDir::Files, QDirIterator::Subdirectories);
        while (header.hasNext()) {
            auto match = publicClass.globalMatch(readFile(header.next()));
            for (; match.hasNext(); ++found) {
                const QByteArray name = match.next().captured(1).toLatin1();
                QVERIFY2(here.contains(name), name);
            }
        }
    }
    QVERIFY(found > 20);
}

void TestListeners::listener_data()
{
    QTest::addColumn<const Kind *>("kind");
    QTest::addColumn<QByteArray>("signal");
    QTest::addColumn<int>("action");
    for (const Kind &kind : kinds()) {
        QByteArrayList signalNames{"destroyed"};
        for (int i = QObject::staticMetaObject.methodCount(); i < kind.meta->methodCount(); ++i) {
            const QMetaMethod method = kind.meta->method(i);
            // Of Qt's own, those that a model doesn't use are no concern of ours.
            const bool isQts =
                method.enclosingMetaObject() == &QAbstractItemModel::staticMetaObject;
            if (method.methodType() == QMetaMethod::Signal
                && (!isQts || kind.provoke.contains(method.name())))
                signalNames << method.name();
        }
        if (kind.provoke.contains("title")) // made by the map, not by the compiler
            signalNames << "title";
        for (const QByteArray &signal : qAsConst(signalNames)) {
            const bool isNever = kind.provoke.contains(signal) && !kind.provoke.value(signal);
            const int end = isNever ? 0 : signal == "destroyed" ? DeleteSender : CallAgain + 1;
            for (int action = 0; action < end; ++action) {
                QTest::addRow(
                    "who hears %s of %s %s", signal.constData(), kind.meta->className(),
                    actions[action])
                    << &kind << signal << action;
            }
        }
    }
}

void TestListeners::act(Action action, const Kind &kind, const QByteArray &signal, World &world)
{
    switch (action) {
    case DoNothing:
        break;
    case DeleteRepository:
        delete world.repository;
        break;
    case DeleteSource:
        delete world.source;
        break;
    case DeleteProvider:
        delete world.provider;
        break;
    case DeleteParts:
        world.deleteParts();
        break;
    case RunEventLoop:
        if (signal == "title")
            changeOnce(world); // the fields let be: a change of them would put all values right
        else if (signal != "destroyed")
            kind.operations(world);
        if (world.source)
            world.source->publish();
        if (world.matcher)
            world.matcher->accept("a c d e");
        QTest::qWait(50); // the timer of PackageListModel takes 30
        break;
    case DeleteSender:
        if (touchedByQt.contains(signal))
            world.owner->deleteLater();
        else
            world.deleteSender();
        break;
    case CallAgain:
        changeAll(world, true);
        if (world.owner)
            kind.operations(world);
        break;
    }
}

void TestListeners::listener()
{
    QFETCH(const Kind *, kind);
    QFETCH(QByteArray, signal);
    QFETCH(int, action);
    World world;
    world.owner = kind->make(world);
    world.sender = kind->sender ? kind->sender(world) : world.owner.data();
    if (kind->meta != &nk::GetRequest::staticMetaObject)
        world.settle();

    const QMetaObject *meta = world.sender->metaObject();
    QMetaMethod emitted;
    for (int i = 0; i < meta->methodCount() && !emitted.isValid(); ++i) {
        if (meta->method(i).methodType() == QMetaMethod::Signal && meta->method(i).name() == signal)
            emitted = meta->method(i);
    }
    if (!emitted.isValid())
        emitted = meta->property(meta->indexOfProperty(signal)).notifySignal();
    Listener listener;
    listener.act = [&] { act(Action(action), *kind, signal, world); };
    const int hear = listener.metaObject()->indexOfSlot("hear()");
    connect(world.sender, emitted, &listener, listener.metaObject()->method(hear));

    if (signal == "destroyed") {
        kind->operations(world); // what these have queued must not come back either
        world.deleteSender();
    } else {
        kind->provoke.value(signal, changeOnce)(world);
    }
    QVERIFY2(
        QTest::qWaitFor([&listener] { return listener.hasHeard; }),
        "nothing here has the signal emitted");
    world.settle();
    if (world.owner && world.repository && world.provider)
        QVERIFY(kind->isRight(world));
}

QTEST_GUILESS_MAIN(TestListeners)
#include "tst_listeners.moc"
