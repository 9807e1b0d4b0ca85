// SPDX-License-Identifier: MIT

// usage: receiver_gtk3|receiver_gtk4 TITLE FILE
// A window with a text view, whose text is kept in FILE; FILE is made when the text view has the focus.

#include "GtkReceiver.h"

#include <iostream>

namespace {

constexpr guint writeInterval = 40;  // ms

struct Receiver {
    GtkWidget* view = nullptr;
    const char* file = nullptr;
    bool ready = false;
    bool changed = false;
};

void write(const Receiver& receiver) {
    GtkTextBuffer* const buffer = gtk_text_view_get_buffer(GTK_TEXT_VIEW(receiver.view));
    GtkTextIter start;
    GtkTextIter end;
    gtk_text_buffer_get_bounds(buffer, &start, &end);
    gchar* const text = gtk_text_buffer_get_text(buffer, &start, &end, FALSE);
    g_file_set_contents(receiver.file, text, -1, nullptr);
    g_free(text);
}

void noteChange(GtkTextBuffer*, gpointer data) {
    static_cast<Receiver*>(data)->changed = true;
}

gboolean writeWhenDue(gpointer data) {
    auto& receiver = *static_cast<Receiver*>(data);
    const bool becameReady = !receiver.ready && gtk_widget_has_focus(receiver.view) != FALSE;
    receiver.ready = receiver.ready || becameReady;
    if (becameReady || (receiver.ready && receiver.changed)) {
        receiver.changed = false;
        write(receiver);
    }
    return G_SOURCE_CONTINUE;
}

}  // namespace

int main(int argc, char** argv) {
    if (argc != 3) {
        std::cerr << "usage: " << argv[0] << " TITLE FILE\n";
        return 2;
    }
    receiver::initialise();
    Receiver receiver{.view = gtk_text_view_new(), .file = argv[2]};
    gtk_text_view_set_wrap_mode(GTK_TEXT_VIEW(receiver.view), GTK_WRAP_WORD_CHAR);
    g_signal_connect(gtk_text_view_get_buffer(GTK_TEXT_VIEW(receiver.view)), "changed",
                     G_CALLBACK(noteChange), &receiver);
    receiver::showWindow(argv[1], receiver.view);
    g_timeout_add(writeInterval, writeWhenDue, &receiver);
    for (;;) g_main_context_iteration(nullptr, TRUE);
}
