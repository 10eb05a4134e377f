/* placeholder */
int sondara_fault_shim_placeholder;
