// SPDX-License-Identifier: MIT
#include "GtkReceiver.h"

namespace receiver {

void initialise() {
    gtk_init(nullptr, nullptr);
}

namespace {
GtkWidget* menuBar() {
    GtkWidget* const bar = gtk_menu_bar_new();
    GtkWidget* const file = gtk_menu_item_new_with_mnemonic("_File");
    GtkWidget* const menu = gtk_menu_new();
    gtk_menu_shell_append(GTK_MENU_SHELL(menu), gtk_menu_item_new_with_mnemonic("_Open"));
    gtk_menu_item_set_submenu(GTK_MENU_ITEM(file), menu);
    gtk_menu_shell_append(GTK_MENU_SHELL(bar), file);
    return bar;
}
}  // namespace

void showWindow(const char* title, GtkWidget* content) {
    GtkWidget* const window = gtk_window_new(GTK_WINDOW_TOPLEVEL);
    gtk_window_set_title(GTK_WINDOW(window), title);
    gtk_window_set_default_size(GTK_WINDOW(window), 600, 300);
    GtkWidget* const scroller = gtk_scrolled_window_new(nullptr, nullptr);
    gtk_container_add(GTK_CONTAINER(scroller), content);
    GtkWidget* const box = gtk_box_new(GTK_ORIENTATION_VERTICAL, 0);
    gtk_box_pack_start(GTK_BOX(box), menuBar(), FALSE, FALSE, 0);
    gtk_box_pack_start(GTK_BOX(box), scroller, TRUE, TRUE, 0);
    gtk_container_add(GTK_CONTAINER(window), box);
    gtk_widget_show_all(window);
    gtk_widget_grab_focus(content);
}

}  // namespace receiver
