// cellPool_test.cpp
//
// The scratch memory of a reading: sizes, alignment, zeros, counts, release, and what happens without memory.

#include "attrlist/CellPool.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <new>
#include <random>
#include <vector>

#include "support/TestFolder.h"

namespace {

using tvxconv::attrlist::CellPool;

constexpr std::size_t kBlock = 8016;  // with its header

std::uintptr_t addressOf(const void* memory) {
    return reinterpret_cast<std::uintptr_t>(memory);
}

bool isZero(const void* memory, std::size_t size) {
    const char* const bytes = static_cast<const char*>(memory);
    return std::all_of(bytes, bytes + size, [](char byte) { return byte == 0; });
}

TEST(CellPool, AlignsByTheSizeOfThePiece) {
    CellPool pool;
    const struct {
        std::size_t size, alignment;
    } cases[] = {{1, 2}, {3, 2}, {2, 2}, {1, 2}, {4, 4},  {1, 2}, {5, 4},    {3, 2},    {7, 4},
                 {1, 2}, {8, 8}, {3, 2}, {9, 8}, {24, 8}, {1, 2}, {7999, 8}, {8000, 8}, {8001, 8}};
    for (int round = 0; round < 100; ++round) {
        for (const auto& [size, alignment] : cases) {
            EXPECT_EQ(addressOf(pool.allocate(size)) % alignment, 0u) << size << " in round " << round;
        }
    }
}

TEST(CellPool, DoesNotAlignPiecesMoreThanTheyNeed) {
    CellPool pool;
    const std::uintptr_t first = addressOf(pool.allocate(8));
    EXPECT_EQ(addressOf(pool.allocate(3)), first + 8);
    EXPECT_EQ(addressOf(pool.allocate(1)), first + 12);
    EXPECT_EQ(addressOf(pool.allocate(1)), first + 14);
    EXPECT_EQ(addressOf(pool.allocate(4)), first + 16);
    EXPECT_EQ(addressOf(pool.allocate(2)), first + 20);
    EXPECT_EQ(addressOf(pool.allocate(6)), first + 24);
    EXPECT_EQ(addressOf(pool.allocate(8)), first + 32);
}

TEST(CellPool, HandsOutZerosThatDoNotOverlap) {
    CellPool pool;
    std::mt19937 random(1);
    std::vector<std::pair<char*, std::size_t>> pieces;
    for (int i = 0; i < 20000; ++i) {
        const std::size_t size = 1 + random() % (i % 100 == 0 ? 20000 : 40);
        char* const piece = static_cast<char*>(pool.allocate(size));
        ASSERT_TRUE(isZero(piece, size)) << "piece " << i;
        std::fill(piece, piece + size, static_cast<char>(i % 127 + 1));
        pieces.emplace_back(piece, size);
    }
    for (std::size_t i = 0; i < pieces.size(); ++i) {
        const auto& [piece, size] = pieces[i];
        const char expected = static_cast<char>(i % 127 + 1);
        ASSERT_TRUE(std::all_of(piece, piece + size, [&](char byte) { return byte == expected; })) << i;
    }
}

TEST(CellPool, TakesBlocksOf8016BytesAndOfTheSizePlus16ForLargerPieces) {
    const std::size_t before = CellPool::bytesInUse();
    CellPool pool;
    EXPECT_EQ(CellPool::bytesInUse(), before) << "nothing was asked for yet";
    pool.allocate(1);
    EXPECT_EQ(CellPool::bytesInUse(), before + kBlock);
    pool.allocate(7992);  // 8 to 8000
    EXPECT_EQ(CellPool::bytesInUse(), before + kBlock);
    pool.allocate(1);
    EXPECT_EQ(CellPool::bytesInUse(), before + 2 * kBlock);
    pool.allocate(8000);
    EXPECT_EQ(CellPool::bytesInUse(), before + 3 * kBlock);
    pool.allocate(8001);
    EXPECT_EQ(CellPool::bytesInUse(), before + 3 * kBlock + 8017);
    pool.allocate(300000);
    EXPECT_EQ(CellPool::bytesInUse(), before + 3 * kBlock + 8017 + 300016);
}

TEST(CellPool, GoesOnWithItsBlockAfterALargePiece) {
    const std::size_t before = CellPool::bytesInUse();
    CellPool pool;
    pool.allocate(9000);
    const std::uintptr_t first = addressOf(pool.allocate(8));
    pool.allocate(9000);
    EXPECT_EQ(addressOf(pool.allocate(8)), first + 8);
    EXPECT_EQ(CellPool::bytesInUse(), before + kBlock + 2 * 9016);
}

TEST(CellPool, ReleasesEverythingAtOnceAndRemembersTheMost) {
    const std::size_t before = CellPool::bytesInUse();
    std::size_t most = 0;
    {
        CellPool one;
        CellPool other;
        for (int i = 0; i < 1000; ++i) one.allocate(1000);  // eight to a block
        other.allocate(500000);
        EXPECT_EQ(CellPool::bytesInUse(), before + 125 * kBlock + 500016);
        most = CellPool::highWaterMark();
        EXPECT_GE(most, CellPool::bytesInUse());
    }
    EXPECT_EQ(CellPool::bytesInUse(), before);
    EXPECT_EQ(CellPool::highWaterMark(), most);
    {
        CellPool pool;
        pool.allocate(most - before);
        EXPECT_EQ(CellPool::highWaterMark(), most + 16);
    }
    EXPECT_EQ(CellPool::highWaterMark(), most + 16);
}

// What no system has. A sanitizer would end the program before the pool is told.
constexpr std::size_t kTooMuch = SIZE_MAX / 2;
#if defined(__SANITIZE_ADDRESS__)
constexpr bool kCanRunOutOfMemory = false;
#elif defined(__has_feature)
constexpr bool kCanRunOutOfMemory = !__has_feature(address_sanitizer);
#else
constexpr bool kCanRunOutOfMemory = true;
#endif

std::vector<std::pair<std::size_t, int>> attempts;

TEST(CellPool, AsksTheHandlerBeforeItTriesAgain) {
    if (!kCanRunOutOfMemory) GTEST_SKIP() << "a sanitizer ends the program";
    attempts.clear();
    const auto before = CellPool::setOutOfMemoryHandler([](std::size_t bytes, int attempt) {
        attempts.emplace_back(bytes, attempt);
        if (attempt == 3) throw std::bad_alloc();
    });
    EXPECT_EQ(before, nullptr);
    const std::size_t inUse = CellPool::bytesInUse();
    {
        CellPool pool;
        EXPECT_THROW(pool.allocate(kTooMuch), std::bad_alloc);
        EXPECT_EQ(CellPool::bytesInUse(), inUse);
        EXPECT_THROW(pool.allocate(SIZE_MAX), std::bad_alloc);
        EXPECT_TRUE(isZero(pool.allocate(100), 100)) << "the pool is as good as before";
    }
    using Attempts = std::vector<std::pair<std::size_t, int>>;
    EXPECT_EQ(attempts, (Attempts{{kTooMuch + 16, 1},
                                  {kTooMuch + 16, 2},
                                  {kTooMuch + 16, 3},
                                  {SIZE_MAX, 1},
                                  {SIZE_MAX, 2},
                                  {SIZE_MAX, 3}}));
    EXPECT_NE(CellPool::setOutOfMemoryHandler(nullptr), nullptr);
}

TEST(CellPool, EndsTheProgramWithoutMemoryAndHandler) {
    if (!kCanRunOutOfMemory) GTEST_SKIP() << "a sanitizer ends the program";
    EXPECT_EXIT(CellPool().allocate(kTooMuch), testing::ExitedWithCode(tests::kOnWindows ? -1 : 255),
                "^malloc: ");
}

}  // namespace
