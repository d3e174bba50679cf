// Scrolling through the chunks of an index for chunk_list_bench.py:
//
//   ChunkListBench [CHUNKS] [FRAMES]
//
// Shows 100,000 cards of different heights, of up to 1,600 characters, in a ChunkListView, and the
// same number of rows of one line each, all of one height, in a QListView. Scrolls both in turn by
// the same small steps, draws each frame, and prints one JSON object: {"name", "ours", "peer",
// "unit"}, frames a second; then the same for jumps all over the list. Needs no display
// (QT_QPA_PLATFORM=offscreen). Both lists wear the style sheet of the studio.
#include "shell/design/Theme.h"
#include "shell/tabs/ChunkListModel.h"
#include "shell/tabs/ChunkListView.h"

#include <QApplication>
#include <QListView>
#include <QScrollBar>
#include <QStringListModel>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <functional>
#include <random>
#include <string>
#include <utility>
#include <vector>

using namespace ombrel;

namespace {

RAGIndex someIndex(int count) {
    std::mt19937 random(1);
    std::vector<DocumentChunk> chunks(static_cast<std::size_t>(count));
    std::int64_t number = 0;
    for (DocumentChunk& chunk : chunks) {
        number += 1;
        chunk.id = Uuid::random();
        chunk.index = number;
        chunk.breadcrumb = {"Guide", "Section " + std::to_string(number / 10)};
        const std::size_t size = 200 + random() % 1400;
        while (chunk.text.size() < size) {
            chunk.text += "word" + std::to_string(random() % 20000);
            chunk.text += random() % 40 == 0 ? '\n' : ' ';
        }
        chunk.tokenCount = static_cast<std::int64_t>(chunk.text.size() / 4);
    }
    RAGIndex index(Uuid::random(), "Bench");
    SourceDocument source;
    source.id = Uuid::random();
    source.name = "large.md";
    source.chunkCount = count;
    index.sources.push_back(source);
    index.chunksByDocument[source.id] = std::move(chunks);
    return index;
}

double framesPerSecond(QAbstractItemView& view, int frames, const std::function<int(int)>& place) {
    const auto start = std::chrono::steady_clock::now();
    for (int frame = 0; frame < frames; ++frame) {
        view.verticalScrollBar()->setValue(place(frame));
        QCoreApplication::sendPostedEvents();
        QCoreApplication::processEvents();
        view.viewport()->repaint();
    }
    const std::chrono::duration<double> taken = std::chrono::steady_clock::now() - start;
    return frames / taken.count();
}

double median(std::vector<double> values) {
    std::sort(values.begin(), values.end());
    return values[values.size() / 2];
}

} // namespace

int main(int argc, char** argv) {
    qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication application(argc, argv);
    Theme::current();
    const int count = argc > 1 ? std::atoi(argv[1]) : 100'000;
    const int frames = argc > 2 ? std::atoi(argv[2]) : 300;
    if (count < 1 || frames < 1) {
        std::fprintf(stderr, "usage: ChunkListBench [CHUNKS] [FRAMES]\n");
        return 2;
    }

    ChunkListModel model;
    ChunkListView cards;
    cards.setModel(&model);
    cards.resize(1000, 700);
    cards.show();
    model.show(someIndex(count), IndexKind::hybrid);

    QStringList lines;
    for (int row = 1; row < model.rowCount(); ++row) {
        lines.append(QString::fromStdString(model.cardOf(row).chunk.text.substr(0, 100)));
    }
    QStringListModel plainModel(lines);
    QListView plain;
    plain.setUniformItemSizes(true);
    plain.setVerticalScrollMode(QAbstractItemView::ScrollPerPixel);
    plain.setModel(&plainModel);
    plain.resize(1000, 700);
    plain.show();
    QCoreApplication::processEvents();

    constexpr int rounds = 5;
    constexpr int step = 24;
    const auto compare = [&](const char* name, const std::function<int(QScrollBar&, int)>& place) {
        std::vector<double> ours, peer;
        for (int round = 0; round < rounds; ++round) {
            ours.push_back(framesPerSecond(cards, frames, [&](int frame) {
                return place(*cards.verticalScrollBar(), frame);
            }));
            peer.push_back(framesPerSecond(plain, frames, [&](int frame) {
                return place(*plain.verticalScrollBar(), frame);
            }));
        }
        std::printf(R"({"name": "%s", "ours": %.0f, "peer": %.0f, "unit": "frames/s"})"
                    "\n",
                    name, median(ours), median(peer));
        std::fflush(stdout);
    };
    compare("scrolling 100,000 cards vs. uniform rows of a QListView",
            [](QScrollBar& bar, int) { return bar.value() + step; });
    compare(
        "jumping in 100,000 cards vs. uniform rows of a QListView",
        [](QScrollBar& bar, int frame) { return (frame * 7919 % 1000) * (bar.maximum() / 1000); });
    return 0;
}
