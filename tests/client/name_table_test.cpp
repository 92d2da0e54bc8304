#include "client/name_table.h"
#include "memory/page_source.h"

#include <gtest/gtest.h>

#include <vector>

namespace {

void* tag(uintptr_t n) { return reinterpret_cast<void*>(n); }

std::vector<void*> valuesOf(const NameTable& table, uint64_t key) {
    std::vector<void*> values;
    for (NameTable::Entry* e = table.find(key); e; e = NameTable::next(e, key)) values.push_back(e->value);
    return values;
}

TEST(NameTable, EqualKeysCoexistNewestFirstAndBucketsShareChains) {
    NameTable table;
    EXPECT_EQ(table.bucketCount(), 16384u);
    const uint64_t key = 42;
    const uint64_t sameBucket = key + 16384 * 7;
    EXPECT_TRUE(table.insert(key, tag(1)));
    EXPECT_TRUE(table.insert(sameBucket, tag(2)));
    EXPECT_TRUE(table.insert(key, tag(3)));
    EXPECT_EQ(valuesOf(table, key), (std::vector<void*>{tag(3), tag(1)}));
    EXPECT_EQ(valuesOf(table, sameBucket), (std::vector<void*>{tag(2)}));
    EXPECT_TRUE(valuesOf(table, key + 1).empty());
}

TEST(NameTable, TheInsertAfterAFullPageTakesASecondPage) {
    NameTable table;
    for (uint64_t i = 0; i < NameTable::kEntriesPerPage; ++i) ASSERT_TRUE(table.insert(i, tag(i + 1)));
    EXPECT_EQ(table.pageCount(), 1u);
    ASSERT_TRUE(table.insert(5000, tag(5001)));
    EXPECT_EQ(table.pageCount(), 2u);
    for (uint64_t i = 0; i < NameTable::kEntriesPerPage; ++i) ASSERT_EQ(valuesOf(table, i).at(0), tag(i + 1));
    EXPECT_EQ(valuesOf(table, 5000).at(0), tag(5001));
}

TEST(NameTable, WithoutPagesEntriesAreDroppedSilently) {
    uint64_t before = poolmem::pageBytesOutstanding();
    {
        NameTable table;
        for (uint64_t i = 0; i < NameTable::kEntriesPerPage; ++i) ASSERT_TRUE(table.insert(i, tag(1)));
        poolmem::failNextPageRequests(1);
        EXPECT_FALSE(table.insert(77777, tag(2)));
        EXPECT_TRUE(valuesOf(table, 77777).empty());
        EXPECT_TRUE(table.insert(77777, tag(3)));
        EXPECT_EQ(valuesOf(table, 77777), std::vector<void*>{tag(3)});
    }
    {
        poolmem::failNextPageRequests(1);
        NameTable bucketless;
        EXPECT_EQ(bucketless.bucketCount(), 0u);
        EXPECT_FALSE(bucketless.insert(1, tag(1)));
        EXPECT_EQ(bucketless.find(1), nullptr);
    }
    EXPECT_EQ(poolmem::pageBytesOutstanding(), before);
}

} // namespace
