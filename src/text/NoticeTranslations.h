#ifndef ZET_NOTICE_TRANSLATIONS_H
#define ZET_NOTICE_TRANSLATIONS_H

namespace ZET::Text {

/// The notices in the shipped languages, as in the module's catalogues: a file may have been written in a
/// language that this host does not have. A test keeps both in agreement.
inline constexpr const char* kTranslatedNotices[] = {
    "# Diese Datei ist teilweise von zet(7) geändert.\n"
    "# Bearbeiten Sie nichts zwischen den Marken ZET_BEGIN und ZET_END von Hand,\n"
    "# es sei denn, Sie wissen, was Sie tun.\n"
    "# Diese Zeilen werden von zet-init(1) und zet-client(1) selbsttätig erneuert.\n",
    "# Diese Datei wird von zet(7) selbsttätig erzeugt.\n"
    "# BEARBEITEN SIE DIESE DATEI NICHT, denn zet(7) wird sie überschreiben, und\n"
    "# Ihre Änderungen gehen verloren.\n"
    "# Bearbeiten Sie '%s'\n"
    "# und rufen Sie diesen Befehl auf:\n"
    "#\n"
    "# $ %s commit-config\n"
    "#",
    "# Este fichero está modificado en parte por zet(7).\n"
    "# No modifique a mano lo que hay entre las marcas ZET_BEGIN y ZET_END\n"
    "# a menos que sepa lo que hace.\n"
    "# Estas líneas las actualizan automáticamente zet-init(1) y zet-client(1).\n",
    "# Este fichero lo genera automáticamente zet(7).\n"
    "# NO MODIFIQUE ESTE FICHERO, porque zet(7) lo sobrescribirá y\n"
    "# sus cambios se perderán.\n"
    "# Modifique '%s'\n"
    "# y ejecute la orden:\n"
    "#\n"
    "# $ %s commit-config\n"
    "#",
    "# Ce fichier est partiellement modifié par zet(7).\n"
    "# Ne modifiez pas à la main ce qui est entre les marques ZET_BEGIN et ZET_END,\n"
    "# sauf si vous savez ce que vous faites.\n"
    "# Ces lignes sont mises à jour automatiquement par zet-init(1) et zet-client(1).\n",
    "# Ce fichier est produit automatiquement par zet(7).\n"
    "# NE MODIFIEZ PAS CE FICHIER, car zet(7) le remplacera et\n"
    "# vos modifications seront perdues.\n"
    "# Modifiez '%s'\n"
    "# et lancez la commande :\n"
    "#\n"
    "# $ %s commit-config\n"
    "#",
};

}  // namespace ZET::Text

#endif
