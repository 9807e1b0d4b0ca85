// SPDX-License-Identifier: MIT
#include "GtkReceiver.h"

namespace receiver {

void initialise() {
    gtk_init();
}

namespace {
GtkWidget* menuBar() {
    GMenu* const file = g_menu_new();
    g_menu_append(file, "_Open", nullptr);
    GMenu* const bar = g_menu_new();
    g_menu_append_submenu(bar, "_File", G_MENU_MODEL(file));
    return gtk_popover_menu_bar_new_from_model(G_MENU_MODEL(bar));
}
}  // namespace

void showWindow(const char* title, GtkWidget* content) {
    GtkWidget* const window = gtk_window_new();
    gtk_window_set_title(GTK_WINDOW(window), title);
    gtk_window_set_default_size(GTK_WINDOW(window), 600, 300);
    GtkWidget* const scroller = gtk_scrolled_window_new();
    gtk_scrolled_window_set_child(GTK_SCROLLED_WINDOW(scroller), content);
    gtk_widget_set_vexpand(scroller, TRUE);
    GtkWidget* const box = gtk_box_new(GTK_ORIENTATION_VERTICAL, 0);
    gtk_box_append(GTK_BOX(box), menuBar());
    gtk_box_append(GTK_BOX(box), scroller);
    gtk_window_set_child(GTK_WINDOW(window), box);
    gtk_window_present(GTK_WINDOW(window));
    gtk_widget_grab_focus(content);
}

}  // namespace receiver
