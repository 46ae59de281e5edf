package vendor.quarn.hardware.drel;

import vendor.quarn.hardware.drel.DrelRequestData;

/**
 * Implemented by clients: the service reports the resources of a request or a registration.
 */
@VintfStability
interface IDrelCallback {
    void onCallback(in DrelRequestData[] data);
}
