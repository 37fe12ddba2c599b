#include "item.h"
#include "itempool.h"

#include <QRandomGenerator>
#include <QtTest>

#include <cstring>
#include <thread>
#include <vector>

using namespace ZAT16;

class tst_ItemPool : public QObject
{
    Q_OBJECT

private slots:
    void itemsComeFromThePool();
    void slotsDoNotOverlap();
    void emptyBlocksGoBack();
    void randomAllocationAndRelease();
    void threadsShareThePool();
    void slotsReusedAfterRelease();
};

void tst_ItemPool::itemsComeFromThePool()
{
    QCOMPARE(sizeof(Item), ItemPool::slotSize);
    const std::size_t before = ItemPool::slotsInUse();
    Item *item = new Item;
    QCOMPARE(ItemPool::slotsInUse(), before + (ItemPool::pooled ? 1 : 0));
    item->name = QStringLiteral("X");
    item->appendChild(new Item);
    QCOMPARE(ItemPool::slotsInUse(), before + (ItemPool::pooled ? 2 : 0));
    delete item;
    QCOMPARE(ItemPool::slotsInUse(), before);
}

// Every slot handed out is its own memory: each one filled with its own pattern keeps it.
void tst_ItemPool::slotsDoNotOverlap()
{
    std::vector<unsigned char *> taken;
    const int count = int(3 * ItemPool::slotsPerBlock + 7);
    for (int i = 0; i < count; ++i) {
        auto *slot = static_cast<unsigned char *>(ItemPool::allocate());
        QVERIFY(slot);
        QCOMPARE(reinterpret_cast<quintptr>(slot) % alignof(std::max_align_t), quintptr(0));
        std::memset(slot, i & 0xff, ItemPool::slotSize);
        taken.push_back(slot);
    }
    for (int i = 0; i < count; ++i) {
        for (std::size_t b = 0; b < ItemPool::slotSize; ++b) {
            if (taken[i][b] != (i & 0xff))
                QFAIL(qPrintable(QStringLiteral("slot %1 byte %2 overwritten").arg(i).arg(b)));
        }
    }
    for (unsigned char *slot : taken)
        ItemPool::release(slot);
}

void tst_ItemPool::emptyBlocksGoBack()
{
    if (!ItemPool::pooled)
        QSKIP("items are ordinary allocations in sanitizer builds");
    const std::size_t blocksBefore = ItemPool::blockCount();
    const std::size_t slotsBefore = ItemPool::slotsInUse();
    std::vector<void *> taken;
    for (std::size_t i = 0; i < 20 * ItemPool::slotsPerBlock; ++i)
        taken.push_back(ItemPool::allocate());
    QVERIFY(ItemPool::blockCount() >= blocksBefore + 19);
    QCOMPARE(ItemPool::slotsInUse(), slotsBefore + taken.size());
    for (void *slot : taken)
        ItemPool::release(slot);
    QCOMPARE(ItemPool::slotsInUse(), slotsBefore);
    // Only the block taken are taken from stays.
    QVERIFY(ItemPool::blockCount() <= blocksBefore + 1);
}

void tst_ItemPool::randomAllocationAndRelease()
{
    QRandomGenerator random(2026);
    struct Live {
        quint32 *slot;
        quint32 stamp;
    };
    std::vector<Live> live;
    const std::size_t slotsBefore = ItemPool::slotsInUse();
    quint32 stamp = 0;
    for (int step = 0; step < 200000; ++step) {
        // Phases of growth and of shrinking, so that blocks fill, empty and fill again.
        const bool grow = (step / 20000) % 2 == 0 ? random.bounded(10) < 7 : random.bounded(10) < 3;
        if (grow || live.empty()) {
            auto *slot = static_cast<quint32 *>(ItemPool::allocate());
            ++stamp;
            for (std::size_t w = 0; w < ItemPool::slotSize / sizeof(quint32); ++w)
                slot[w] = stamp;
            live.push_back({ slot, stamp });
        } else {
            const std::size_t index = random.bounded(quint32(live.size()));
            const Live entry = live[index];
            for (std::size_t w = 0; w < ItemPool::slotSize / sizeof(quint32); ++w) {
                if (entry.slot[w] != entry.stamp)
                    QFAIL("a live slot was overwritten");
            }
            ItemPool::release(entry.slot);
            live[index] = live.back();
            live.pop_back();
        }
    }
    if (ItemPool::pooled)
        QCOMPARE(ItemPool::slotsInUse(), slotsBefore + live.size());
    for (const Live &entry : live)
        ItemPool::release(entry.slot);
    QCOMPARE(ItemPool::slotsInUse(), slotsBefore);
}

// Items made in one thread may be deleted in another.
void tst_ItemPool::threadsShareThePool()
{
    const std::size_t slotsBefore = ItemPool::slotsInUse();
    std::vector<Item *> made[4];
    std::vector<std::thread> threads;
    for (int t = 0; t < 4; ++t) {
        threads.emplace_back([&made, t] {
            for (int i = 0; i < 20000; ++i) {
                Item *item = new Item;
                item->id = quint64(t) << 32 | quint64(i);
                made[t].push_back(item);
            }
        });
    }
    for (std::thread &thread : threads)
        thread.join();
    threads.clear();
    for (int t = 0; t < 4; ++t) {
        for (int i = 0; i < 20000; ++i)
            QCOMPARE(made[t][i]->id, quint64(t) << 32 | quint64(i));
    }
    for (int t = 0; t < 4; ++t) {
        // Each thread deletes what another one made.
        threads.emplace_back([&made, t] { qDeleteAll(made[(t + 1) % 4]); });
    }
    for (std::thread &thread : threads)
        thread.join();
    QCOMPARE(ItemPool::slotsInUse(), slotsBefore);
}

void tst_ItemPool::slotsReusedAfterRelease()
{
    if (!ItemPool::pooled)
        QSKIP("items are ordinary allocations in sanitizer builds");
    // A tree deleted and loaded again uses about the same blocks, not new ones.
    auto build = [] {
        auto *root = new Item;
        for (int i = 0; i < 5000; ++i) {
            auto *tag = new Item;
            for (int j = 0; j < 10; ++j)
                tag->appendChild(new Item);
            root->appendChild(tag);
        }
        return root;
    };
    delete build();
    const std::size_t blocks = ItemPool::blockCount();
    Item *again = build();
    const std::size_t blocksWithTree = ItemPool::blockCount();
    QVERIFY(blocksWithTree >= 55000 / ItemPool::slotsPerBlock);
    delete again;
    QVERIFY(ItemPool::blockCount() <= blocks + 1);
}

QTEST_GUILESS_MAIN(tst_ItemPool)
#include "tst_itempool.moc"
