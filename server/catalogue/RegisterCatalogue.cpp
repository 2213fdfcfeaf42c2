#include "Catalogue.h"

void registerBoardProcedures();
void registerDirectoryProcedures();
void registerMailProcedures();
void registerNoteProcedures();
void registerSignInProcedures();

void registerCatalogue() {
    static const bool done = [] {
        registerSignInProcedures();
        registerDirectoryProcedures();
        registerBoardProcedures();
        registerNoteProcedures();
        registerMailProcedures();
        return true;
    }();
    (void)done;
}
