<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE TS>
<TS version="2.1" language="fr" sourcelanguage="en">
<context>
    <name>DataTable</name>
    <message>
        <source>Save the table</source>
        <translation>Enregistrer le tableau</translation>
    </message>
    <message>
        <source>Comma-separated values (*.csv);;All files (*)</source>
        <translation>Valeurs séparées par des virgules (*.csv);;Tous les fichiers (*)</translation>
    </message>
    <message>
        <source>Save the picture</source>
        <translation>Enregistrer l&apos;image</translation>
    </message>
    <message>
        <source>Pictures (*.png);;All files (*)</source>
        <translation>Images (*.png);;Tous les fichiers (*)</translation>
    </message>
</context>
<context>
    <name>Kelvane::FlowUnitQuestion</name>
    <message>
        <source>&amp;Yes</source>
        <translation>&amp;Oui</translation>
    </message>
    <message>
        <source>&amp;No</source>
        <translation>&amp;Non</translation>
    </message>
    <message>
        <source>&amp;Cancel</source>
        <translation>&amp;Annuler</translation>
    </message>
</context>
<context>
    <name>Kelvane::LQDialogFrame</name>
    <message>
        <source>OK</source>
        <translation>OK</translation>
    </message>
    <message>
        <source>Apply (close window)</source>
        <translation>Appliquer (ferme la fenêtre)</translation>
    </message>
    <message>
        <source>Apply</source>
        <translation>Appliquer</translation>
    </message>
    <message>
        <source>Apply (leave window open)</source>
        <translation>Appliquer (laisse la fenêtre ouverte)</translation>
    </message>
    <message>
        <source>Cancel</source>
        <translation>Annuler</translation>
    </message>
    <message>
        <source>Cancel (close window)</source>
        <translation>Annuler (ferme la fenêtre)</translation>
    </message>
    <message>
        <source>Help</source>
        <translation>Aide</translation>
    </message>
    <message>
        <source>Launch help</source>
        <translation>Ouvrir l&apos;aide</translation>
    </message>
</context>
<context>
    <name>Kelvane::LQFlowUnitDialog</name>
    <message>
        <source>Flow Unit Analysis</source>
        <translation>Analyse des unités d&apos;écoulement</translation>
    </message>
    <message>
        <source>Advanced</source>
        <translation>Avancé</translation>
    </message>
    <message>
        <source>Click here to display the advanced parameters</source>
        <translation>Cliquer pour montrer les paramètres avancés</translation>
    </message>
    <message>
        <source>Save as Text...</source>
        <translation>Enregistrer en texte...</translation>
    </message>
    <message>
        <source>Save in file using text format (tab separated, Excel compatible).</source>
        <translation>Enregistrer dans un fichier texte (séparé par des tabulations).</translation>
    </message>
    <message>
        <source>OK</source>
        <translation>OK</translation>
    </message>
    <message>
        <source>Launch upgridding process (close window)</source>
        <translation>Lancer le regroupement (ferme la fenêtre)</translation>
    </message>
    <message>
        <source>Apply</source>
        <translation>Appliquer</translation>
    </message>
    <message>
        <source>Launch upgridding process (leave window open)</source>
        <translation>Lancer le regroupement (laisse la fenêtre ouverte)</translation>
    </message>
    <message>
        <source>Cancel</source>
        <translation>Annuler</translation>
    </message>
    <message>
        <source>Cancel (close window)</source>
        <translation>Annuler (ferme la fenêtre)</translation>
    </message>
    <message>
        <source>Help</source>
        <translation>Aide</translation>
    </message>
    <message>
        <source>Launch help</source>
        <translation>Ouvrir l&apos;aide</translation>
    </message>
    <message>
        <source>Create fault block regions</source>
        <translation>Créer les régions des blocs de failles</translation>
    </message>
    <message>
        <source>Copy regions</source>
        <translation>Copier les régions</translation>
    </message>
    <message>
        <source>Copy regions to the new grid. Model regions and layers are always preserved.</source>
        <translation>Copier les régions dans la nouvelle grille. Régions du modèle et couches sont toujours gardées.</translation>
    </message>
    <message>
        <source>Build grid from stratigraphic model</source>
        <translation>Construire la grille depuis le modèle stratigraphique</translation>
    </message>
    <message>
        <source>Use the stratigraphic model information to rebuild the grid.</source>
        <translation>Utiliser le modèle stratigraphique pour reconstruire la grille.</translation>
    </message>
    <message>
        <source>Select regions to copy.</source>
        <translation>Choisir les régions à copier.</translation>
    </message>
    <message>
        <source>Copy regions from:</source>
        <translation>Copier les régions d&apos;après :</translation>
    </message>
    <message>
        <source>All original cells</source>
        <translation>Toutes les mailles d&apos;origine</translation>
    </message>
    <message>
        <source>If any of the original cells is in a region, then the upscaled cell is in that region.</source>
        <translation>Si une maille d&apos;origine est dans une région, la maille grossière l&apos;est aussi.</translation>
    </message>
    <message>
        <source>Percentage of fine cells</source>
        <translation>Pourcentage des mailles fines</translation>
    </message>
    <message>
        <source>If the user defined percentage of the fine cells is in a region, then the upscaled cell is in that region.</source>
        <translation>Si le pourcentage indiqué des mailles fines est dans une région, la maille grossière l&apos;est aussi.</translation>
    </message>
    <message>
        <source>Most probable cell regions</source>
        <translation>Régions les plus probables</translation>
    </message>
    <message>
        <source>The upscaled cell is in the most probable region computed from the original cells. If more than one region have the same frequency, upscaled cell belongs to all these regions</source>
        <translation>La maille grossière est dans la région la plus probable d&apos;après les mailles d&apos;origine. Si plusieurs régions ont la même fréquence, elle appartient à toutes</translation>
    </message>
    <message>
        <source>Percentage of fine cell volume</source>
        <translation>Pourcentage du volume des mailles fines</translation>
    </message>
    <message>
        <source>If the user defined percentage of the fine cell volume is in the region, then the upscaled cell is in that region.</source>
        <translation>Si le pourcentage indiqué du volume des mailles fines est dans la région, la maille grossière l&apos;est aussi.</translation>
    </message>
    <message>
        <source>Pointer is nil: %1
</source>
        <translation>Pointeur nul : %1
</translation>
    </message>
    <message>
        <source>Could not create the upgridding activity.
</source>
        <translation>Impossible de créer l&apos;activité de mise à l&apos;échelle.
</translation>
    </message>
</context>
<context>
    <name>Kelvane::LQFlowUnitPanel</name>
    <message>
        <source>Property</source>
        <translation>Propriété</translation>
    </message>
    <message>
        <source>Describe how to average the property within each layer</source>
        <translation>Décrire comment moyenner la propriété dans chaque couche</translation>
    </message>
    <message>
        <source>Mean</source>
        <translation>Moyenne</translation>
    </message>
    <message>
        <source>Power value of the averaging method.</source>
        <translation>Valeur de la puissance de la moyenne.</translation>
    </message>
    <message>
        <source>Power</source>
        <translation>Puissance</translation>
    </message>
    <message>
        <source>Volume weighted</source>
        <translation>Pondérée par le volume</translation>
    </message>
    <message>
        <source>The contribution of each cell will be weighted by its volume.</source>
        <translation>La contribution de chaque maille sera pondérée par son volume.</translation>
    </message>
    <message>
        <source>Region</source>
        <translation>Région</translation>
    </message>
    <message>
        <source>Select the region whose cells are analyzed.</source>
        <translation>Choisir la région dont les mailles sont analysées.</translation>
    </message>
    <message>
        <source>number of flow units</source>
        <translation>nombre d&apos;unités</translation>
    </message>
    <message>
        <source>deviation from mean</source>
        <translation>écart à la moyenne</translation>
    </message>
    <message>
        <source>deviation from mean (%)</source>
        <translation>écart à la moyenne (%)</translation>
    </message>
    <message>
        <source>maximum difference (%)</source>
        <translation>différence maximale (%)</translation>
    </message>
    <message>
        <source>maximum threshold</source>
        <translation>seuil maximal</translation>
    </message>
    <message>
        <source>minimum threshold</source>
        <translation>seuil minimal</translation>
    </message>
    <message>
        <source>Calculate flow units from::
</source>
        <translation>Calculer les unités d&apos;écoulement d&apos;après :
</translation>
    </message>
    <message>
        <source>Number of flow units: Group layers with the closest means to create n flow units.
</source>
        <translation>Nombre d&apos;unités d&apos;écoulement : regrouper les couches aux moyennes les plus proches en n unités d&apos;écoulement.
</translation>
    </message>
    <message>
        <source>Deviation from mean: Group layers with deviations from mean below n.
</source>
        <translation>Écart à la moyenne : regrouper les couches dont l&apos;écart à la moyenne est inférieur à n.
</translation>
    </message>
    <message>
        <source>Deviation from mean (%): Group layers with deviations from mean below n%.
</source>
        <translation>Écart à la moyenne (%) : regrouper les couches dont l&apos;écart à la moyenne est inférieur à n %.
</translation>
    </message>
    <message>
        <source>Maximum difference (%): Group layers with differences below n%.
</source>
        <translation>Différence maximale (%) : regrouper les couches dont les différences sont inférieures à n %.
</translation>
    </message>
    <message>
        <source>Maximum threshold: Group layers with layer means below n.
</source>
        <translation>Seuil maximal : regrouper les couches dont la moyenne est inférieure à n.
</translation>
    </message>
    <message>
        <source>Minimum threshold: Group layers with layer means above n.
</source>
        <translation>Seuil minimal : regrouper les couches dont la moyenne est supérieure à n.
</translation>
    </message>
    <message>
        <source>Create flow units</source>
        <translation>Créer les unités d&apos;écoulement</translation>
    </message>
    <message>
        <source>Create Flow Units: Merges layers that meet the specified criterion.</source>
        <translation>Créer les unités d&apos;écoulement : fusionne les couches qui remplissent le critère.</translation>
    </message>
    <message>
        <source>Calculate flow units from:</source>
        <translation>Calculer les unités d&apos;après :</translation>
    </message>
    <message>
        <source>Cannot evaluate the power value.
</source>
        <translation>La valeur de la puissance ne se lit pas.
</translation>
    </message>
    <message>
        <source>The power value must be in [-1;1] range.
</source>
        <translation>La puissance doit être dans l&apos;intervalle [-1;1].
</translation>
    </message>
</context>
<context>
    <name>Kelvane::LQFlowUnitPropertyPanel</name>
    <message>
        <source>Property %1</source>
        <translation>Propriété %1</translation>
    </message>
    <message>
        <source>Enter the property that you want to analyze.</source>
        <translation>Entrer la propriété à analyser.</translation>
    </message>
</context>
<context>
    <name>Kelvane::LQFlowUnitRatioPanel</name>
    <message>
        <source>Ratio %1</source>
        <translation>Rapport %1</translation>
    </message>
    <message>
        <source>Choose the numerator of the compositional property you want to analyze.</source>
        <translation>Choisir le numérateur du rapport à analyser.</translation>
    </message>
    <message>
        <source>Over property</source>
        <translation>Sur propriété</translation>
    </message>
    <message>
        <source>Choose the denominator of the compositional property you want to analyze.</source>
        <translation>Choisir le dénominateur du rapport à analyser.</translation>
    </message>
</context>
<context>
    <name>Kelvane::LQFlowUnitWidget</name>
    <message>
        <source>Select a grid to analyze and name the new grid</source>
        <translation>Choisir une grille à analyser et nommer la nouvelle</translation>
    </message>
    <message>
        <source>Specifies the grid that contains the properties to analyze.</source>
        <translation>La grille qui contient les propriétés à analyser.</translation>
    </message>
    <message>
        <source>Stratigraphic grid</source>
        <translation>Grille stratigraphique</translation>
    </message>
    <message>
        <source>Specifies the name of a new grid that will contain the merged K-layers.</source>
        <translation>Le nom d&apos;une nouvelle grille avec les couches K fusionnées.</translation>
    </message>
    <message>
        <source>New grid</source>
        <translation>Nouvelle grille</translation>
    </message>
    <message>
        <source>Select one or more properties and update the table.</source>
        <translation>Choisir une ou plusieurs propriétés et mettre à jour le tableau.</translation>
    </message>
    <message>
        <source>Specify the number of properties and ratios to analyze.</source>
        <translation>Donner le nombre de propriétés et de rapports à analyser.</translation>
    </message>
    <message>
        <source>Enter the number of properties to analyze.</source>
        <translation>Entrer le nombre de propriétés à analyser.</translation>
    </message>
    <message>
        <source>Properties</source>
        <translation>Propriétés</translation>
    </message>
    <message>
        <source>Enter the number of property ratios to analyze.</source>
        <translation>Entrer le nombre de rapports à analyser.</translation>
    </message>
    <message>
        <source>Ratios</source>
        <translation>Rapports</translation>
    </message>
    <message>
        <source>Specify at least one property to analyze, and then update the table with the calculated values for each layer.
</source>
        <translation>Indiquez au moins une propriété à analyser, puis mettez à jour le tableau avec les valeurs calculées de chaque couche.
</translation>
    </message>
    <message>
        <source>You can then create flow units and insert or merge layers.</source>
        <translation>Vous pouvez ensuite créer des unités d&apos;écoulement et insérer ou fusionner des couches.</translation>
    </message>
    <message>
        <source>Update</source>
        <translation>Mettre à jour</translation>
    </message>
    <message>
        <source>Calculates statistics for each property or ratio and fills the values in the table.</source>
        <translation>Calcule les statistiques de chaque propriété ou rapport et remplit le tableau.</translation>
    </message>
    <message>
        <source>Reset</source>
        <translation>Réinitialiser</translation>
    </message>
    <message>
        <source>Reset flow unit definitions</source>
        <translation>Réinitialiser les unités d&apos;écoulement</translation>
    </message>
    <message>
        <source>Insert</source>
        <translation>Insérer</translation>
    </message>
    <message>
        <source>Insert Flow Unit</source>
        <translation>Insérer une unité d&apos;écoulement</translation>
    </message>
    <message>
        <source>Merge</source>
        <translation>Fusionner</translation>
    </message>
    <message>
        <source>Merge with Flow Unit Above</source>
        <translation>Fusionner avec l&apos;unité du dessus</translation>
    </message>
    <message>
        <source>Total layers:</source>
        <translation>Couches en tout :</translation>
    </message>
    <message>
        <source>Total flow units:</source>
        <translation>Unités en tout :</translation>
    </message>
    <message>
        <source>Table Statistics:
</source>
        <translation>Statistiques du tableau :
</translation>
    </message>
    <message>
        <source>Flow Unit: A group of n layers with the same fluid-flow feature (generally smaller than a stratigraphic unit).
</source>
        <translation>Unité d&apos;écoulement : groupe de n couches de même comportement d&apos;écoulement (en général plus petit qu&apos;une unité stratigraphique).
</translation>
    </message>
    <message>
        <source>Layer Mean: The mean (average) of the property values in one layer.
</source>
        <translation>Moyenne de couche : moyenne des valeurs de la propriété dans une couche.
</translation>
    </message>
    <message>
        <source>Flow-Unit Mean: The mean (average) of the property values in one flow unit.
</source>
        <translation>Moyenne d&apos;unité : moyenne des valeurs de la propriété dans une unité d&apos;écoulement.
</translation>
    </message>
    <message>
        <source>% Difference: The difference between the Layer Mean and the Flow-Unit Mean: ([Layer Mean - Flow-Unit Mean]/Flow Unit Mean) %.
</source>
        <translation>% Différence : différence entre la moyenne de couche et celle de l&apos;unité : ([moyenne de couche - moyenne d&apos;unité]/moyenne d&apos;unité) %.
</translation>
    </message>
    <message>
        <source>Heterogeneity: The Dykstra-Parsons coefficient for one layer: VDP=(P50-P84.1)/P50 where P84.1=k is such that Prob(K&lt;k)=.841 and P50 is the median.
</source>
        <translation>Hétérogénéité : coefficient de Dykstra-Parsons d&apos;une couche : VDP=(P50-P84.1)/P50, où P84.1=k est tel que Prob(K&lt;k)=.841 et P50 est la médiane.
</translation>
    </message>
    <message>
        <source>Stratigraphic Unit: A group of n layers representing the same geologic feature (generally larger than a flow unit).
</source>
        <translation>Unité stratigraphique : groupe de n couches d&apos;un même objet géologique (en général plus grand qu&apos;une unité d&apos;écoulement).
</translation>
    </message>
    <message>
        <source>Layer Mean</source>
        <translation>Moy. couche</translation>
    </message>
    <message>
        <source>Flow Unit Mean</source>
        <translation>Moy. unité</translation>
    </message>
    <message>
        <source>% Difference</source>
        <translation>% différence</translation>
    </message>
    <message>
        <source>Heterogeneity</source>
        <translation>Hétérogénéité</translation>
    </message>
    <message>
        <source>Flow Unit</source>
        <translation>Unité</translation>
    </message>
    <message>
        <source>Stratigraphic Unit</source>
        <translation>Unité stratigraphique</translation>
    </message>
    <message>
        <source>In ratio panel %1, the two properties are identical
</source>
        <translation>Dans le rapport %1, les deux propriétés sont identiques
</translation>
    </message>
    <message>
        <source>No SGrid selected.
</source>
        <translation>Aucune grille choisie.
</translation>
    </message>
    <message>
        <source>Please provide a new SGrid name.
</source>
        <translation>Donnez un nom à la nouvelle grille.
</translation>
    </message>
    <message>
        <source>There are not enough sections to merge.
</source>
        <translation>Il n&apos;y a pas assez de sections à fusionner.
</translation>
    </message>
    <message>
        <source>There are not enough sections to merge: Same or less number of flow units as stratigraphic units 
</source>
        <translation>Il n&apos;y a pas assez de sections à fusionner : autant ou moins d&apos;unités d&apos;écoulement que d&apos;unités stratigraphiques 
</translation>
    </message>
    <message>
        <source>Checking Flow Units...</source>
        <translation>Vérification des unités d&apos;écoulement...</translation>
    </message>
    <message>
        <source>You are merging sections belonging to two or more stratigraphic units.  Flow Unit %1: layer %2-&gt; layer %3 overlap stratigraphic units %4 and %5.
</source>
        <translation>Vous fusionnez des sections de plusieurs unités stratigraphiques.  Unité d&apos;écoulement %1 : les couches %2 à %3 chevauchent les unités stratigraphiques %4 et %5.
</translation>
    </message>
    <message>
        <source>Creating command...</source>
        <translation>Préparation de la commande...</translation>
    </message>
    <message>
        <source>Save as Text</source>
        <translation>Enregistrer en texte</translation>
    </message>
    <message>
        <source>Cannot write the file %1: %2
</source>
        <translation>Impossible d&apos;écrire le fichier %1 : %2
</translation>
    </message>
    <message>
        <source>The grid does not have stratigraphic units, you should use the SGrid command Modify Layering (Edit menu) to add them.
</source>
        <translation>La grille n&apos;a pas d&apos;unités stratigraphiques ; ajoutez-les par la commande SGrid Modify Layering (menu Edit).
</translation>
    </message>
    <message>
        <source>The grid does not have stratigraphic units, do you want to add them?</source>
        <translation>La grille n&apos;a pas d&apos;unités stratigraphiques, voulez-vous les ajouter ?</translation>
    </message>
    <message>
        <source>Are you sure you want to reset the flow unit definitions?</source>
        <translation>Voulez-vous vraiment réinitialiser les unités d&apos;écoulement ?</translation>
    </message>
    <message>
        <source>Do you want to reset the flow unit definitions before proceeding?
 Otherwise, the calculation will start from the current flow units.</source>
        <translation>Voulez-vous réinitialiser les unités d&apos;écoulement avant de continuer ?
 Sinon, le calcul part des unités d&apos;écoulement actuelles.</translation>
    </message>
    <message>
        <source>Specify a number that is less than the current number of units.
</source>
        <translation>Indiquez un nombre inférieur au nombre actuel d&apos;unités.
</translation>
    </message>
    <message>
        <source>Cannot evaluate the number of units value. Please specify an integer.
</source>
        <translation>Le nombre d&apos;unités est illisible. Indiquez un entier.
</translation>
    </message>
    <message>
        <source>Cannot evaluate the threshold value.
</source>
        <translation>La valeur du seuil est illisible.
</translation>
    </message>
</context>
<context>
    <name>Kelvane::LQSGAxisEditorMngr</name>
    <message>
        <source>Axis I</source>
        <translation>Axe I</translation>
    </message>
    <message>
        <source>Axis J</source>
        <translation>Axe J</translation>
    </message>
    <message>
        <source>Axis K</source>
        <translation>Axe K</translation>
    </message>
    <message>
        <source>Internal error: could not determined axis...
</source>
        <translation>Erreur interne : axe indéterminé...
</translation>
    </message>
    <message>
        <source>Please report the problem
</source>
        <translation>Merci de signaler le problème
</translation>
    </message>
</context>
<context>
    <name>Kelvane::LQSGDownscaleDialog</name>
    <message>
        <source>Create SGrid for Downscaling</source>
        <translation>Créer une grille raffinée</translation>
    </message>
    <message>
        <source>Create new SGrid for downscaling
by subdividing cells of existing SGrid</source>
        <translation>Créer une nouvelle grille plus fine
en subdivisant les mailles d&apos;une grille</translation>
    </message>
    <message>
        <source>Properties will be copied, but not upscaled, to the new Grid.</source>
        <translation>Les propriétés seront copiées dans la nouvelle grille, sans mise à l&apos;échelle.</translation>
    </message>
    <message>
        <source>Regions will be copied to the new Grid. However model regions, faultblocks and layers are always preserved.</source>
        <translation>Les régions sont copiées vers la nouvelle grille. Les régions du modèle, les blocs de failles et les couches sont toujours conservés.</translation>
    </message>
    <message>
        <source>Could not create Downgridding activity
</source>
        <translation>Impossible de créer l&apos;activité d&apos;affinage
</translation>
    </message>
</context>
<context>
    <name>Kelvane::LQSGManualAxisEditorMngr</name>
    <message>
        <source>Section Editor intersection: Read message &amp; please check your data
</source>
        <translation>Sections qui se recoupent : lisez le message et vérifiez vos données
</translation>
    </message>
    <message>
        <source>Section Editor %1 from %2 to %3 intersects Section Editor %4 from %5 to %6
</source>
        <translation>La section %1 de %2 à %3 recoupe la section %4 de %5 à %6
</translation>
    </message>
    <message>
        <source>Direction %1. Section Editor %2 from %3 to %4 intersects Section Editor %5 from %6 to %7
</source>
        <translation>Direction %1. La section %2 de %3 à %4 recoupe la section %5 de %6 à %7
</translation>
    </message>
</context>
<context>
    <name>Kelvane::LQSGMergeAxisEditorMngr</name>
    <message>
        <source>    From cell            To cell             With step    Section to keep</source>
        <translation>    De maille            À maille             Par pas      Section à garder</translation>
    </message>
    <message>
        <source>Sections to be merged                                      Property</source>
        <translation>Sections à fusionner                                       Propriété</translation>
    </message>
    <message>
        <source>Section Editor Overlaps a Stratigraphic Unit: Read message &amp; please check your data
</source>
        <translation>Une section chevauche une unité stratigraphique : lisez le message et vérifiez vos données
</translation>
    </message>
    <message>
        <source>Section Editor %1 overlaps stratigraphic unit %2 and %3
</source>
        <translation>La section %1 chevauche les unités stratigraphiques %2 et %3
</translation>
    </message>
</context>
<context>
    <name>Kelvane::LQSGMergeAxisFullEditorMngr</name>
    <message>
        <source>Enabled/Disabled %1</source>
        <translation>Activer ou désactiver %1</translation>
    </message>
    <message>
        <source>Enabled/Disabled %1 as merged axis</source>
        <translation>Activer ou désactiver %1 comme axe fusionné</translation>
    </message>
    <message>
        <source>Sections to be merged</source>
        <translation>Sections à fusionner</translation>
    </message>
    <message>
        <source>From cell</source>
        <translation>De maille</translation>
    </message>
    <message>
        <source>To cell</source>
        <translation>À maille</translation>
    </message>
    <message>
        <source>With step</source>
        <translation>Par pas</translation>
    </message>
    <message>
        <source>Property section to keep</source>
        <translation>Section de propriété à garder</translation>
    </message>
</context>
<context>
    <name>Kelvane::LQSGOneAxisDialog</name>
    <message>
        <source>Direction</source>
        <translation>Direction</translation>
    </message>
    <message>
        <source>Choose the axis along which you want to merge the sections.</source>
        <translation>Choisir l&apos;axe le long duquel fusionner les sections.</translation>
    </message>
    <message>
        <source>Copy properties</source>
        <translation>Copier les propriétés</translation>
    </message>
    <message>
        <source>Properties will be copied to the new Grid</source>
        <translation>Les propriétés seront copiées dans la nouvelle grille</translation>
    </message>
    <message>
        <source>Copy regions</source>
        <translation>Copier les régions</translation>
    </message>
    <message>
        <source>Regions will be copied to the new Grid</source>
        <translation>Les régions seront copiées dans la nouvelle grille</translation>
    </message>
    <message>
        <source>Section Editor</source>
        <translation>Éditeur de sections</translation>
    </message>
    <message>
        <source>Please provide a sgrid to based the computation on
</source>
        <translation>Donnez une grille sur laquelle fonder le calcul
</translation>
    </message>
    <message>
        <source>Please provide a new sgrid name
</source>
        <translation>Donnez un nom à la nouvelle grille
</translation>
    </message>
</context>
<context>
    <name>Kelvane::LQSGPropertyUpscaleDialog</name>
    <message>
        <source>Please choose a fine sgrid name</source>
        <translation>Choisissez une grille fine</translation>
    </message>
    <message>
        <source>Please choose a coarse sgrid name</source>
        <translation>Choisissez une grille grossière</translation>
    </message>
    <message>
        <source>Please choose a fine porosity name</source>
        <translation>Choisissez une porosité fine</translation>
    </message>
    <message>
        <source>Please choose a fine property name</source>
        <translation>Choisissez une propriété fine</translation>
    </message>
    <message>
        <source>Please choose a fine permeability I name</source>
        <translation>Choisissez une perméabilité fine selon I</translation>
    </message>
    <message>
        <source>Please choose a fine permeability J name</source>
        <translation>Choisissez une perméabilité fine selon J</translation>
    </message>
    <message>
        <source>Please choose a fine permeability K name</source>
        <translation>Choisissez une perméabilité fine selon K</translation>
    </message>
    <message>
        <source>Please choose a fine permeability name</source>
        <translation>Choisissez une perméabilité fine</translation>
    </message>
    <message>
        <source>Please choose a property name for weight</source>
        <translation>Choisissez une propriété comme poids</translation>
    </message>
    <message>
        <source>Please enter strictly positive interger for the sampling</source>
        <translation>Indiquez un entier strictement positif pour l&apos;échantillonnage</translation>
    </message>
    <message>
        <source>Please enter strictly positive value for treatment of 0</source>
        <translation>Indiquez une valeur strictement positive pour le traitement de 0</translation>
    </message>
    <message>
        <source>Please enter strictly positive value for treatment of negative values</source>
        <translation>Indiquez une valeur strictement positive pour le traitement des valeurs négatives</translation>
    </message>
    <message>
        <source>Please enter strictly positive value for treatment of NDV</source>
        <translation>Indiquez une valeur strictement positive pour le traitement des valeurs absentes</translation>
    </message>
    <message>
        <source>&lt;b&gt;Fine grid:&lt;/b&gt; %1&lt;br&gt;</source>
        <translation>&lt;b&gt;Grille fine :&lt;/b&gt; %1&lt;br&gt;</translation>
    </message>
    <message>
        <source>&lt;b&gt;Coarse grid:&lt;/b&gt; %1&lt;br&gt;</source>
        <translation>&lt;b&gt;Grille grossière :&lt;/b&gt; %1&lt;br&gt;</translation>
    </message>
    <message>
        <source> &lt;b&gt;Fine grid regions:&lt;/b&gt; %1&lt;br&gt;</source>
        <translation> &lt;b&gt;Régions de la grille fine :&lt;/b&gt; %1&lt;br&gt;</translation>
    </message>
    <message>
        <source> &lt;b&gt;Coarse grid regions:&lt;/b&gt; %1&lt;br&gt;</source>
        <translation> &lt;b&gt;Régions de la grille grossière :&lt;/b&gt; %1&lt;br&gt;</translation>
    </message>
    <message>
        <source>&lt;br&gt;</source>
        <translation>&lt;br&gt;</translation>
    </message>
    <message>
        <source> &lt;b&gt;Fine grid property:&lt;/b&gt; </source>
        <translation> &lt;b&gt;Propriété de la grille fine :&lt;/b&gt; </translation>
    </message>
    <message>
        <source> &lt;b&gt;Fine grid property:&lt;/b&gt; %1&lt;br&gt;</source>
        <translation> &lt;b&gt;Propriété de la grille fine :&lt;/b&gt; %1&lt;br&gt;</translation>
    </message>
    <message>
        <source> &lt;b&gt;Fine grid property:&lt;/b&gt;&lt;br&gt;</source>
        <translation> &lt;b&gt;Propriété de la grille fine :&lt;/b&gt;&lt;br&gt;</translation>
    </message>
    <message>
        <source> &lt;b&gt;Coarse grid property:&lt;/b&gt; </source>
        <translation> &lt;b&gt;Propriété de la grille grossière :&lt;/b&gt; </translation>
    </message>
    <message>
        <source> &lt;b&gt;Coarse grid property:&lt;/b&gt; %1&lt;br&gt;</source>
        <translation> &lt;b&gt;Propriété de la grille grossière :&lt;/b&gt; %1&lt;br&gt;</translation>
    </message>
    <message>
        <source> &lt;b&gt;Mapper:&lt;/b&gt; %1&lt;br&gt;</source>
        <translation> &lt;b&gt;Association :&lt;/b&gt; %1&lt;br&gt;</translation>
    </message>
    <message>
        <source> &lt;b&gt; Take faults into account:&lt;/b&gt;</source>
        <translation> &lt;b&gt; Prendre en compte les failles :&lt;/b&gt;</translation>
    </message>
    <message>
        <source>On &lt;br&gt;</source>
        <translation>Oui &lt;br&gt;</translation>
    </message>
    <message>
        <source>Off &lt;br&gt;</source>
        <translation>Non &lt;br&gt;</translation>
    </message>
    <message>
        <source> &lt;b&gt;Adaptive sampling:&lt;/b&gt; </source>
        <translation> &lt;b&gt;Échantillonnage adaptatif :&lt;/b&gt; </translation>
    </message>
    <message>
        <source>On</source>
        <translation>Oui</translation>
    </message>
    <message>
        <source>Off</source>
        <translation>Non</translation>
    </message>
    <message>
        <source> I:%1  J:%2 K:%3 &lt;br&gt;</source>
        <translation> I:%1  J:%2 K:%3 &lt;br&gt;</translation>
    </message>
    <message>
        <source> &lt;b&gt;Boundary Conditions:&lt;/b&gt; </source>
        <translation> &lt;b&gt;Conditions aux limites :&lt;/b&gt; </translation>
    </message>
    <message>
        <source>Unconfined</source>
        <translation>Non confiné</translation>
    </message>
    <message>
        <source>K-Confined</source>
        <translation>Confiné en K</translation>
    </message>
    <message>
        <source>Confined</source>
        <translation>Confiné</translation>
    </message>
    <message>
        <source> &lt;b&gt;Solver method:&lt;/b&gt; </source>
        <translation> &lt;b&gt;Méthode de résolution :&lt;/b&gt; </translation>
    </message>
    <message>
        <source>Exact</source>
        <translation>Exacte</translation>
    </message>
    <message>
        <source>Approximate</source>
        <translation>Approchée</translation>
    </message>
    <message>
        <source> &lt;b&gt;Property type:&lt;/b&gt; </source>
        <translation> &lt;b&gt;Type de propriété :&lt;/b&gt; </translation>
    </message>
    <message>
        <source> &lt;b&gt;Method:&lt;/b&gt; </source>
        <translation> &lt;b&gt;Méthode :&lt;/b&gt; </translation>
    </message>
    <message>
        <source> &lt;b&gt;Weight by cell volume:&lt;/b&gt; On &lt;br&gt;</source>
        <translation> &lt;b&gt;Pondération par le volume des mailles :&lt;/b&gt; Oui &lt;br&gt;</translation>
    </message>
    <message>
        <source> &lt;b&gt;Weight by product of properties:&lt;/b&gt; %1&lt;br&gt;</source>
        <translation> &lt;b&gt;Pondération par un produit de propriétés :&lt;/b&gt; %1&lt;br&gt;</translation>
    </message>
    <message>
        <source>Off&lt;br&gt;</source>
        <translation>Non&lt;br&gt;</translation>
    </message>
    <message>
        <source> &lt;b&gt;Pre-processing Options:&lt;/b&gt; &lt;br&gt;</source>
        <translation> &lt;b&gt;Options de prétraitement :&lt;/b&gt; &lt;br&gt;</translation>
    </message>
    <message>
        <source> &lt;b&gt;Set 0 to:&lt;/b&gt; </source>
        <translation> &lt;b&gt;Mettre 0 à :&lt;/b&gt; </translation>
    </message>
    <message>
        <source> &lt;b&gt;Set negative values to:&lt;/b&gt; </source>
        <translation> &lt;b&gt;Mettre les valeurs négatives à :&lt;/b&gt; </translation>
    </message>
    <message>
        <source> &lt;b&gt;Set no-data values to:&lt;/b&gt; </source>
        <translation> &lt;b&gt;Mettre les valeurs absentes à :&lt;/b&gt; </translation>
    </message>
    <message>
        <source> &lt;br&gt;</source>
        <translation> &lt;br&gt;</translation>
    </message>
    <message>
        <source> &lt;b&gt;Post-processing Options:&lt;/b&gt;</source>
        <translation> &lt;b&gt;Options de post-traitement :&lt;/b&gt;</translation>
    </message>
    <message>
        <source> Create regions&lt;br&gt;</source>
        <translation> Créer des régions&lt;br&gt;</translation>
    </message>
    <message>
        <source> Off&lt;br&gt;</source>
        <translation> Non&lt;br&gt;</translation>
    </message>
    <message>
        <source>&lt;b&gt;&lt;font color=&quot;#ff0000&quot;&gt; </source>
        <translation>&lt;b&gt;&lt;font color=&quot;#ff0000&quot;&gt; </translation>
    </message>
    <message>
        <source>&lt;/font&gt;&lt;/b&gt;</source>
        <translation>&lt;/font&gt;&lt;/b&gt;</translation>
    </message>
    <message>
        <source>Pointer is nil: %1
</source>
        <translation>Pointeur nul : %1
</translation>
    </message>
    <message>
        <source>No method associated to the property class
</source>
        <translation>Aucune méthode associée à cette classe de propriété
</translation>
    </message>
    <message>
        <source>OK</source>
        <translation>OK</translation>
    </message>
    <message>
        <source>Apply (close window)</source>
        <translation>Appliquer (ferme la fenêtre)</translation>
    </message>
    <message>
        <source>Help</source>
        <translation>Aide</translation>
    </message>
    <message>
        <source>Launch help</source>
        <translation>Ouvrir l&apos;aide</translation>
    </message>
    <message>
        <source>Choose the type of property you want to upscale:
-static e.g. porosity
-dynamic e.g. permeability
-discrete e.g. facies</source>
        <translation>Choisissez le type de propriété à mettre à l&apos;échelle :
- statique, par exemple la porosité
- dynamique, par exemple la perméabilité
- discrète, par exemple le faciès</translation>
    </message>
    <message>
        <source>Property Type</source>
        <translation>Type de propriété</translation>
    </message>
    <message>
        <source>Describe how the property will be upscaled inside each cell.</source>
        <translation>Décrire comment la propriété est mise à l&apos;échelle dans chaque maille.</translation>
    </message>
    <message>
        <source>Method </source>
        <translation>Méthode </translation>
    </message>
    <message>
        <source>Power value of the averaging method.</source>
        <translation>Valeur de la puissance de la moyenne.</translation>
    </message>
    <message>
        <source>Power value</source>
        <translation>Valeur de la puissance</translation>
    </message>
    <message>
        <source>Weighted by cell volume</source>
        <translation>Pondérée par le volume des mailles</translation>
    </message>
    <message>
        <source>The contribution of each cell will be weighted by its volume.</source>
        <translation>La contribution de chaque maille sera pondérée par son volume.</translation>
    </message>
    <message>
        <source>Weighted by product of fine grid properties:</source>
        <translation>Pondérée par un produit de propriétés de la grille fine :</translation>
    </message>
    <message>
        <source>The contribution of each cell will be weighted by product of properties of the cell</source>
        <translation>La contribution de chaque maille est pondérée par un produit de ses propriétés</translation>
    </message>
    <message>
        <source>Choose the property you want to use for weight</source>
        <translation>Choisir la propriété qui sert de poids</translation>
    </message>
    <message>
        <source>Properties</source>
        <translation>Propriétés</translation>
    </message>
    <message>
        <source>Sampling</source>
        <translation>Échantillonnage</translation>
    </message>
    <message>
        <source>Adaptive</source>
        <translation>Adaptatif</translation>
    </message>
    <message>
        <source>The sampling will be automatically determined and will not exceed the amount specified below.</source>
        <translation>L&apos;échantillonnage est choisi automatiquement, sans dépasser les nombres ci-dessous.</translation>
    </message>
    <message>
        <source>Fixed</source>
        <translation>Fixe</translation>
    </message>
    <message>
        <source>The sampling will be fixed to the values specified below.</source>
        <translation>L&apos;échantillonnage sera fixé aux valeurs ci-dessous.</translation>
    </message>
    <message>
        <source>Max sampling:</source>
        <translation>Échantillonnage max. :</translation>
    </message>
    <message>
        <source>Number of subdivisions of one coarse cell in I direction.</source>
        <translation>Nombre de subdivisions d&apos;une maille grossière en direction I.</translation>
    </message>
    <message>
        <source> along J:</source>
        <translation> selon J :</translation>
    </message>
    <message>
        <source>Number of subdivisions of one coarse cell in J direction.</source>
        <translation>Nombre de subdivisions d&apos;une maille grossière en direction J.</translation>
    </message>
    <message>
        <source> along K:</source>
        <translation> selon K :</translation>
    </message>
    <message>
        <source>Number of subdivisions of one coarse cell in K direction.</source>
        <translation>Nombre de subdivisions d&apos;une maille grossière en direction K.</translation>
    </message>
    <message>
        <source>Boundary Conditions</source>
        <translation>Conditions aux limites</translation>
    </message>
    <message>
        <source>Confined mode will output a diagonal tensor (II, JJ, KK)</source>
        <translation>Le mode confiné donne un tenseur diagonal (II, JJ, KK)</translation>
    </message>
    <message>
        <source>K-Confined mode will output in addition IJ term. The tensor is symmetric (II, IJ, JJ, KK)</source>
        <translation>Le mode confiné en K donne en plus le terme IJ. Le tenseur est symétrique (II, IJ, JJ, KK)</translation>
    </message>
    <message>
        <source>Unconfined mode will output a symmetric tensor (II, IJ, IK, JJ, JK ,KK)</source>
        <translation>Le mode non confiné donne un tenseur symétrique (II, IJ, IK, JJ, JK, KK)</translation>
    </message>
    <message>
        <source>Method</source>
        <translation>Méthode</translation>
    </message>
    <message>
        <source>Fast/Approximated</source>
        <translation>Rapide/approchée</translation>
    </message>
    <message>
        <source>Solve the pressure field with a Conjugate Gradient method: fast but approximated.</source>
        <translation>Résout le champ de pression par gradient conjugué : rapide mais approché.</translation>
    </message>
    <message>
        <source>Slow/Exact</source>
        <translation>Lente/exacte</translation>
    </message>
    <message>
        <source>Solve the pressue fiels with a Direct Method: slow but accurated.</source>
        <translation>Résout le champ de pression par une méthode directe : lent mais exact.</translation>
    </message>
    <message>
        <source>SGrid Upscale Property</source>
        <translation>Mise à l&apos;échelle d&apos;une propriété</translation>
    </message>
    <message>
        <source>Stratigraphic Grid Definitions</source>
        <translation>Grilles stratigraphiques</translation>
    </message>
    <message>
        <source>Mapping Method Definition</source>
        <translation>Méthode d&apos;association</translation>
    </message>
    <message>
        <source>Upscaling Method Definition</source>
        <translation>Méthode de mise à l&apos;échelle</translation>
    </message>
    <message>
        <source>Property Definitions</source>
        <translation>Propriétés</translation>
    </message>
    <message>
        <source>Pre-Processing</source>
        <translation>Prétraitement</translation>
    </message>
    <message>
        <source>Post-Processing</source>
        <translation>Post-traitement</translation>
    </message>
    <message>
        <source>Summary</source>
        <translation>Résumé</translation>
    </message>
    <message>
        <source>Apply (leave window open)</source>
        <translation>Appliquer (laisse la fenêtre ouverte)</translation>
    </message>
    <message>
        <source>Cancel (close window)</source>
        <translation>Annuler (ferme la fenêtre)</translation>
    </message>
    <message>
        <source>Fine SGrid</source>
        <translation>Grille fine</translation>
    </message>
    <message>
        <source>Select the fine stratigraphic grid you want to upscale.</source>
        <translation>Choisir la grille stratigraphique fine.</translation>
    </message>
    <message>
        <source>Coarse SGrid</source>
        <translation>Grille grossière</translation>
    </message>
    <message>
        <source>Select the coarse stratigraphic grid you want to upscale to.</source>
        <translation>Choisir la grille stratigraphique grossière.</translation>
    </message>
    <message>
        <source>Use Regions</source>
        <translation>Utiliser des régions</translation>
    </message>
    <message>
        <source>Toggle to restrict the computation
 on some regions of the grid only</source>
        <translation>Cocher pour limiter le calcul
 à certaines régions de la grille</translation>
    </message>
    <message>
        <source>Name regions where computation is performed</source>
        <translation>Nommer les régions où le calcul est fait</translation>
    </message>
    <message>
        <source>Choose the way the cells will be associated between the fine grid and the coarse grid.
-&gt; geometric: the XYZ location of the cells is used as reference.
     For each coarse cell, the fine cells whose centre lies inside it are searched.
     Layers are ignored.
-&gt; parametric: the IJK index of the cells is used as reference.
     I,J,K is mapped to I,J,K.
     Both grids need the same areal gridding and meta model information.
-&gt; stratigraphic: the XYK index of the cells is used as reference.
     Columns are selected by XY, and the cells of the right layer are kept in K.
     Both grids need meta model information.
-&gt; k-constrained geometric: geometric mapping with a filter on K.
     As geometric, and only cells of the right layer are kept.</source>
        <translation>Choisissez comment associer les mailles de la grille fine et de la grille grossière.
-&gt; geometric : d&apos;après la position XYZ des mailles.
     Pour chaque maille grossière, on cherche les mailles fines dont le centre est dedans.
     Les couches ne comptent pas.
-&gt; parametric : d&apos;après l&apos;indice IJK des mailles.
     I,J,K correspond à I,J,K.
     Les deux grilles ont le même maillage horizontal et les informations du méta-modèle.
-&gt; stratigraphic : d&apos;après l&apos;indice XYK des mailles.
     Les colonnes sont choisies par XY, et l&apos;on garde en K les mailles de la bonne couche.
     Les deux grilles ont les informations du méta-modèle.
-&gt; k-constrained geometric : géométrique, avec un filtre en K.
     Comme geometric, et seules les mailles de la bonne couche sont gardées.</translation>
    </message>
    <message>
        <source>Mapper</source>
        <translation>Association</translation>
    </message>
    <message>
        <source>Do not upscale across faults</source>
        <translation>Ne pas mélanger à travers les failles</translation>
    </message>
    <message>
        <source>Check precisely around the faults. If the grids geometries are too 
different, this flag is set automatically to off.</source>
        <translation>Vérifier avec précision autour des failles. Si les géométries des grilles sont trop 
différentes, cette option est désactivée automatiquement.</translation>
    </message>
    <message>
        <source>Fine SGrid Property</source>
        <translation>Propriété de la grille fine</translation>
    </message>
    <message>
        <source>Choose the property you want to upscale from.</source>
        <translation>Choisir la propriété de départ.</translation>
    </message>
    <message>
        <source> I</source>
        <translation> I</translation>
    </message>
    <message>
        <source>Choose the property you want to upscale along I.</source>
        <translation>Choisir la propriété selon I.</translation>
    </message>
    <message>
        <source> J</source>
        <translation> J</translation>
    </message>
    <message>
        <source>Choose the property you want to upscale along J.</source>
        <translation>Choisir la propriété selon J.</translation>
    </message>
    <message>
        <source> K</source>
        <translation> K</translation>
    </message>
    <message>
        <source>Choose the property you want to upscale along K.</source>
        <translation>Choisir la propriété selon K.</translation>
    </message>
    <message>
        <source>Fine SGrid Property along:</source>
        <translation>Propriété de la grille fine selon :</translation>
    </message>
    <message>
        <source>Coarse SGrid Property</source>
        <translation>Propriété de la grille grossière</translation>
    </message>
    <message>
        <source>Choose the upscaled property name.</source>
        <translation>Choisir le nom de la propriété mise à l&apos;échelle.</translation>
    </message>
    <message>
        <source>Choose the upscaled property name along I.</source>
        <translation>Choisissez le nom de la propriété mise à l&apos;échelle selon I.</translation>
    </message>
    <message>
        <source>Choose the upscaled property name along J.</source>
        <translation>Choisissez le nom de la propriété mise à l&apos;échelle selon J.</translation>
    </message>
    <message>
        <source>Choose the upscaled property name along K.</source>
        <translation>Choisissez le nom de la propriété mise à l&apos;échelle selon K.</translation>
    </message>
    <message>
        <source>Coarse SGrid Property along:</source>
        <translation>Propriété de la grille grossière selon :</translation>
    </message>
    <message>
        <source>Set 0 values to </source>
        <translation>Remplacer 0 par </translation>
    </message>
    <message>
        <source>Value which replace 0.</source>
        <translation>Valeur qui remplace 0.</translation>
    </message>
    <message>
        <source>0 Values will be treated as the value specified (if the method allows it), otherwise:
-it will be ignored for static property
</source>
        <translation>Les valeurs 0 prennent la valeur indiquée (si la méthode le permet), sinon :
- elles sont ignorées pour une propriété statique
</translation>
    </message>
    <message>
        <source>Set negative values to </source>
        <translation>Remplacer les valeurs négatives par </translation>
    </message>
    <message>
        <source>Value which replace negative values.</source>
        <translation>Valeur qui remplace les valeurs négatives.</translation>
    </message>
    <message>
        <source>0 and negative Values will be treated as the value specified (if the method allows it), otherwise:
</source>
        <translation>Les valeurs 0 et négatives prennent la valeur indiquée (si la méthode le permet), sinon :
</translation>
    </message>
    <message>
        <source>Set no-data values to </source>
        <translation>Remplacer les valeurs absentes par </translation>
    </message>
    <message>
        <source>Value which replace the No Data Value.</source>
        <translation>Valeur qui remplace les valeurs absentes.</translation>
    </message>
    <message>
        <source>No Data Value will be treated as the value specified (if the method allows it), otherwise:
-it will be filled with mean of cells around for dynamic property</source>
        <translation>Les valeurs absentes prennent la valeur indiquée (si la méthode le permet), sinon :
- elles sont remplies par la moyenne des mailles voisines pour une propriété dynamique</translation>
    </message>
    <message>
        <source>Create region containing problematic cells</source>
        <translation>Créer une région des mailles à problème</translation>
    </message>
    <message>
        <source>If there is some cells requiring some backup computation, or
for which the value cannot be computed, create a region and add them to it.</source>
        <translation>S&apos;il y a des mailles qui demandent un calcul de secours, ou
dont la valeur ne peut pas être calculée, créer une région qui les contient.</translation>
    </message>
</context>
<context>
    <name>Kelvane::LQSGSectionDialog</name>
    <message>
        <source>Stratigraphic Grid Definition</source>
        <translation>Définition de la grille stratigraphique</translation>
    </message>
    <message>
        <source>Name</source>
        <translation>Nom</translation>
    </message>
    <message>
        <source>Type the new name of the SGrid</source>
        <translation>Taper le nom de la nouvelle grille</translation>
    </message>
    <message>
        <source>Based on Stratigraphic Grid</source>
        <translation>D&apos;après la grille stratigraphique</translation>
    </message>
    <message>
        <source>Select the stratigraphic grid you want to work on.</source>
        <translation>Choisir la grille stratigraphique de travail.</translation>
    </message>
    <message>
        <source>Graphic Attributes</source>
        <translation>Attributs graphiques</translation>
    </message>
    <message>
        <source>Show selected sections</source>
        <translation>Montrer les sections choisies</translation>
    </message>
    <message>
        <source>toggle on if you want the selected cell sections beeing painted on the grid</source>
        <translation>peindre les sections de mailles choisies sur la grille</translation>
    </message>
    <message>
        <source>Properties</source>
        <translation>Propriétés</translation>
    </message>
    <message>
        <source>Select properties that will be copied</source>
        <translation>Choisir les propriétés à copier</translation>
    </message>
    <message>
        <source>Regions</source>
        <translation>Régions</translation>
    </message>
    <message>
        <source>Select regions that will be copied</source>
        <translation>Choisir les régions à copier</translation>
    </message>
    <message>
        <source>Pointer is nil: %1
</source>
        <translation>Pointeur nul : %1
</translation>
    </message>
    <message>
        <source>Please provide a new sgrid name
</source>
        <translation>Donnez un nom à la nouvelle grille
</translation>
    </message>
    <message>
        <source>Please provide a sgrid to based the computation on
</source>
        <translation>Donnez une grille sur laquelle fonder le calcul
</translation>
    </message>
    <message>
        <source>Please provide a sgrid to based the computation on (No grid found)
</source>
        <translation>Donnez une grille sur laquelle fonder le calcul (aucune trouvée)
</translation>
    </message>
    <message>
        <source>Please provide a sgrid for painting the sections on
</source>
        <translation>Donnez une grille sur laquelle peindre les sections
</translation>
    </message>
</context>
<context>
    <name>Kelvane::LQSGSectionEditor</name>
    <message>
        <source>Select cell section by picking in the Camera</source>
        <translation>Choisir la section en pointant dans la caméra</translation>
    </message>
    <message>
        <source> N </source>
        <translation> N </translation>
    </message>
    <message>
        <source>add a new section editor after this line</source>
        <translation>ajouter une ligne après celle-ci</translation>
    </message>
    <message>
        <source> D </source>
        <translation> S </translation>
    </message>
    <message>
        <source>delete current section editor</source>
        <translation>supprimer cette ligne</translation>
    </message>
</context>
<context>
    <name>Kelvane::LQSGSectionMergeDialog</name>
    <message>
        <source>Merge SGrid Sections</source>
        <translation>Fusionner des sections de grille</translation>
    </message>
    <message>
        <source>Create new SGrid by merging cell sections of existing SGrid</source>
        <translation>Créer une nouvelle grille en fusionnant des sections de mailles d&apos;une grille</translation>
    </message>
</context>
<context>
    <name>Kelvane::LQSGSectionMergeEditor</name>
    <message>
        <source>First cell section index</source>
        <translation>Indice de la première section</translation>
    </message>
    <message>
        <source>Last cell section index</source>
        <translation>Indice de la dernière section</translation>
    </message>
    <message>
        <source>Step between first and last section</source>
        <translation>Pas entre la première et la dernière section</translation>
    </message>
    <message>
        <source>Cell section index for property reference</source>
        <translation>Indice de la section de référence des propriétés</translation>
    </message>
</context>
<context>
    <name>Kelvane::LQSGSectionSubdivideDialog</name>
    <message>
        <source>Subdivide SGrid Sections</source>
        <translation>Subdiviser des sections de grille</translation>
    </message>
    <message>
        <source>Create new SGrid by subdividing cell sections of existing SGrid</source>
        <translation>Créer une nouvelle grille en subdivisant des sections de mailles d&apos;une grille</translation>
    </message>
    <message>
        <source>Cell thickness as isochore</source>
        <translation>Épaisseur de maille comme isochore</translation>
    </message>
    <message>
        <source>If on, the thickness will be computed vertically, else along fiber.</source>
        <translation>Si coché, l&apos;épaisseur est verticale, sinon le long de la fibre.</translation>
    </message>
</context>
<context>
    <name>Kelvane::LQSGSectionSubdivideEditor</name>
    <message>
        <source>First cell index of the section to be subdivided</source>
        <translation>Indice de la première maille à subdiviser</translation>
    </message>
    <message>
        <source>Last cell index of the section to be subdivided</source>
        <translation>Indice de la dernière maille à subdiviser</translation>
    </message>
    <message>
        <source>Number of cells to be substituted to the current cell</source>
        <translation>Nombre de mailles qui remplacent la maille</translation>
    </message>
    <message>
        <source>Stratigraphy of the new cells</source>
        <translation>Stratigraphie des nouvelles mailles</translation>
    </message>
    <message>
        <source>Thickness</source>
        <translation>Épaisseur</translation>
    </message>
    <message>
        <source>Proportional</source>
        <translation>Proportionnel</translation>
    </message>
    <message>
        <source>Parallel to I-</source>
        <translation>Parallèle à I-</translation>
    </message>
    <message>
        <source>Parallel to I+</source>
        <translation>Parallèle à I+</translation>
    </message>
    <message>
        <source>Parallel to J-</source>
        <translation>Parallèle à J-</translation>
    </message>
    <message>
        <source>Parallel to J+</source>
        <translation>Parallèle à J+</translation>
    </message>
    <message>
        <source>Parallel to Base</source>
        <translation>Parallèle à la base</translation>
    </message>
    <message>
        <source>Parallel to Top</source>
        <translation>Parallèle au toit</translation>
    </message>
</context>
<context>
    <name>Kelvane::LQSGSubdivideAxisEditorMngr</name>
    <message>
        <source>    From cell            To cell               Amount     Stratigraphy            Thickness</source>
        <translation>    De maille            À maille               Nombre     Stratigraphie           Épaisseur</translation>
    </message>
    <message>
        <source>Sections to be subdivided</source>
        <translation>Sections à subdiviser</translation>
    </message>
</context>
<context>
    <name>Kelvane::LQSGSubdivideAxisFullEditorMngr</name>
    <message>
        <source>Enabled/Disabled</source>
        <translation>Activer ou désactiver </translation>
    </message>
    <message>
        <source> as subdivided axis</source>
        <translation> comme axe subdivisé</translation>
    </message>
    <message>
        <source>Sections to be subdivided</source>
        <translation>Sections à subdiviser</translation>
    </message>
    <message>
        <source>From cell</source>
        <translation>De maille</translation>
    </message>
    <message>
        <source>To cell</source>
        <translation>À maille</translation>
    </message>
    <message>
        <source>Amount</source>
        <translation>Nombre</translation>
    </message>
    <message>
        <source>Pattern</source>
        <translation>Motif</translation>
    </message>
    <message>
        <source>Stratigraphy</source>
        <translation>Stratigraphie</translation>
    </message>
    <message>
        <source>Width</source>
        <translation>Largeur</translation>
    </message>
    <message>
        <source>Thickness</source>
        <translation>Épaisseur</translation>
    </message>
    <message>
        <source>New cell thickness value is given as isochore</source>
        <translation>La nouvelle épaisseur de maille est donnée en isochore</translation>
    </message>
    <message>
        <source>If on, the cell thickness will be computed in reference to Z, else along fiber.</source>
        <translation>Si coché, l&apos;épaisseur des mailles est calculée selon Z, sinon le long de la fibre.</translation>
    </message>
    <message>
        <source>New cell width value is given as percent of the original cell width</source>
        <translation>La nouvelle largeur de maille est donnée en pourcentage de la largeur d&apos;origine</translation>
    </message>
    <message>
        <source>If on, the entered width represents percents of the original cell width.</source>
        <translation>Si coché, la largeur saisie est un pourcentage de la largeur d&apos;origine.</translation>
    </message>
    <message>
        <source>New cell thickness value is given as percent of the original cell thickness</source>
        <translation>La nouvelle épaisseur de maille est donnée en pourcentage de l&apos;épaisseur d&apos;origine</translation>
    </message>
    <message>
        <source>If on, the entered thickness represents percents of the original cell thickness.</source>
        <translation>Si coché, l&apos;épaisseur saisie est un pourcentage de l&apos;épaisseur d&apos;origine.</translation>
    </message>
</context>
<context>
    <name>Kelvane::LQSGUpscaleDialog</name>
    <message>
        <source>Create SGrid for Upscaling</source>
        <translation>Créer une grille grossière</translation>
    </message>
    <message>
        <source>Create new SGrid for upscaling
by merging cells of existing SGrid</source>
        <translation>Créer une nouvelle grille plus grossière
en fusionnant les mailles d&apos;une grille</translation>
    </message>
    <message>
        <source>Properties will be copied, but not upscaled, to the new Grid. Not recommanded</source>
        <translation>Les propriétés seront copiées dans la nouvelle grille, sans mise à l&apos;échelle. Déconseillé</translation>
    </message>
    <message>
        <source>Regions will be copied to the new Grid. However model regions and layers are always preserved.</source>
        <translation>Les régions sont copiées vers la nouvelle grille. Les régions du modèle et les couches sont toujours conservées.</translation>
    </message>
    <message>
        <source>Could not create Upgridding activity
</source>
        <translation>Impossible de créer l&apos;activité de mise à l&apos;échelle
</translation>
    </message>
</context>
<context>
    <name>Kelvane::LQSGWholeGridDialog</name>
    <message>
        <source>Build Attributes</source>
        <translation>Attributs de construction</translation>
    </message>
    <message>
        <source>Use stratigraphic model information to build the grid</source>
        <translation>Utiliser le modèle stratigraphique pour construire la grille</translation>
    </message>
    <message>
        <source>toggle on if you want to use the stratigraphic model information for rebuilding the grid</source>
        <translation>cocher pour reconstruire la grille avec les informations du modèle stratigraphique</translation>
    </message>
    <message>
        <source>I</source>
        <translation>I</translation>
    </message>
    <message>
        <source>J</source>
        <translation>J</translation>
    </message>
    <message>
        <source>K</source>
        <translation>K</translation>
    </message>
    <message>
        <source>Total</source>
        <translation>Total</translation>
    </message>
    <message>
        <source>Number of cells:</source>
        <translation>Nombre de mailles :</translation>
    </message>
    <message>
        <source>New number of cells:</source>
        <translation>Nouveau nombre de mailles :</translation>
    </message>
    <message>
        <source>Copy properties</source>
        <translation>Copier les propriétés</translation>
    </message>
    <message>
        <source>Copy regions</source>
        <translation>Copier les régions</translation>
    </message>
    <message>
        <source>Create fault block regions</source>
        <translation>Créer les régions des blocs de failles</translation>
    </message>
    <message>
        <source>toggle on if you want to create fault block regions</source>
        <translation>cocher pour créer des régions de blocs de failles</translation>
    </message>
    <message>
        <source>Creating SGrid %1</source>
        <translation>Création de la grille %1</translation>
    </message>
    <message>
        <source>Please specify at least one axis!
</source>
        <translation>Donnez au moins un axe !
</translation>
    </message>
</context>
<context>
    <name>Kelvane::LQSGridCellSectionSelectToolAction</name>
    <message>
        <source>Select cell section by picking in the Camera</source>
        <translation>Choisir la section en pointant dans la caméra</translation>
    </message>
    <message>
        <source>Could not get the graphic object. Please pick another point.
</source>
        <translation>Objet graphique introuvable. Choisissez un autre point.
</translation>
    </message>
    <message>
        <source>Could not retrieve Point coordinate. Please pick another point.
</source>
        <translation>Coordonnées du point introuvables. Choisissez un autre point.
</translation>
    </message>
    <message>
        <source>Could not retrieve Grid coordinate. Please pick another point.
</source>
        <translation>Coordonnées dans la grille introuvables. Choisissez un autre point.
</translation>
    </message>
    <message>
        <source>SGrid: %1 Selected Cell Section: %2 %3 %4
</source>
        <translation>Grille : %1 Section de mailles choisie : %2 %3 %4
</translation>
    </message>
</context>
<context>
    <name>Kelvane::RegionModes</name>
    <message>
        <source>from all original cells</source>
        <translation>de toutes les mailles d&apos;origine</translation>
    </message>
    <message>
        <source>If any of the original cells is in a region, then the upscaled cell is in that region.</source>
        <translation>Si une maille d&apos;origine est dans une région, la maille grossière l&apos;est aussi.</translation>
    </message>
    <message>
        <source>from original cell number percentile</source>
        <translation>d&apos;un pourcentage du nombre de mailles d&apos;origine</translation>
    </message>
    <message>
        <source>If the user defined percentile of the original cells is in a region, then the upscaled cell is in that region.</source>
        <translation>Si le pourcentage indiqué des mailles d&apos;origine est dans une région, la maille grossière l&apos;est aussi.</translation>
    </message>
    <message>
        <source>from original cell volume percentile</source>
        <translation>d&apos;un pourcentage du volume de mailles d&apos;origine</translation>
    </message>
    <message>
        <source>If the user defined percentile of the original cell volume is in the region, then the upscaled cell is in that region.</source>
        <translation>Si le pourcentage indiqué du volume des mailles d&apos;origine est dans la région, la maille grossière l&apos;est aussi.</translation>
    </message>
    <message>
        <source>from most probable cell region</source>
        <translation>de la région la plus probable</translation>
    </message>
    <message>
        <source>The upscaled cell is in the most probable region computed from the original cells. If more than one region have the same frequency, upscaled cell belongs to all these regions</source>
        <translation>La maille grossière est dans la région la plus probable d&apos;après les mailles d&apos;origine. Si plusieurs régions ont la même fréquence, elle appartient à toutes</translation>
    </message>
</context>
<context>
    <name>Messages</name>
    <message>
        <source>There is no help page for &quot;%1&quot;.
</source>
        <translation>Il n&apos;y a pas de page d&apos;aide pour « %1 ».
</translation>
    </message>
    <message>
        <source>Computing flow unit statistics...</source>
        <translation>Calcul des statistiques des unités d&apos;écoulement...</translation>
    </message>
    <message>
        <source>Flow unit statistics: %1
</source>
        <translation>Statistiques des unités d&apos;écoulement : %1
</translation>
    </message>
    <message>
        <source>Creating flow units...</source>
        <translation>Création des unités d&apos;écoulement...</translation>
    </message>
</context>
<context>
    <name>Lodex::LQMultiComboBox</name>
    <message>
        <source>... and %1 more</source>
        <translation>... et %1 de plus</translation>
    </message>
</context>
<context>
    <name>QObject</name>
    <message>
        <source>none</source>
        <translation>aucun</translation>
    </message>
    <message>
        <source>%1 entries</source>
        <translation>%1 entrées</translation>
    </message>
</context>
<context>
    <name>XMQShell</name>
    <message>
        <source>Cancel</source>
        <translation>Annuler</translation>
    </message>
    <message>
        <source>Help</source>
        <translation>Aide</translation>
    </message>
</context>
<context>
    <name>lodex::Autosave</name>
    <message>
        <source>the folder %1 cannot be written to</source>
        <translation>impossible d&apos;écrire dans le dossier %1</translation>
    </message>
    <message>
        <source>No copy for recovery can be kept: %1</source>
        <translation>Impossible de garder une copie de récupération : %1</translation>
    </message>
</context>
<context>
    <name>lodex::CameraView</name>
    <message>
        <source>3D view of the grids</source>
        <translation>Vue 3D des grilles</translation>
    </message>
    <message>
        <source>This display cannot show the 3D view.</source>
        <translation>Cet affichage ne peut pas montrer la vue 3D.</translation>
    </message>
    <message>
        <source>The view cannot draw a picture of %1 by %2 pixels.</source>
        <translation>La vue ne peut pas dessiner une image de %1 sur %2 pixels.</translation>
    </message>
    <message>
        <source>%1: painted sections outside the grid are left out: %2
</source>
        <translation>%1 : sections peintes hors de la grille, laissées de côté : %2
</translation>
    </message>
</context>
<context>
    <name>lodex::CellInfo</name>
    <message>
        <source>undefined</source>
        <translation>indéfini</translation>
    </message>
    <message>
        <source>%1: cell I %2, J %3, K %4</source>
        <translation>%1 : maille I %2, J %3, K %4</translation>
    </message>
    <message>
        <source>X %1, Y %2, depth %3</source>
        <translation>X %1, Y %2, profondeur %3</translation>
    </message>
    <message>
        <source>inactive</source>
        <translation>inactive</translation>
    </message>
    <message>
        <source>Unit: %1</source>
        <translation>Unité : %1</translation>
    </message>
    <message>
        <source>Regions: %1</source>
        <translation>Régions : %1</translation>
    </message>
</context>
<context>
    <name>lodex::CellPalette</name>
    <message>
        <source>Unit</source>
        <translation>Unité</translation>
    </message>
    <message>
        <source>Depth</source>
        <translation>Profondeur</translation>
    </message>
    <message>
        <source>undefined</source>
        <translation>indéfini</translation>
    </message>
</context>
<context>
    <name>lodex::ColourLegendDialog</name>
    <message>
        <source>Colours of %1</source>
        <translation>Couleurs de %1</translation>
    </message>
    <message>
        <source>Colours from the low to the high end of the range</source>
        <translation>Couleurs du bas au haut de l&apos;intervalle</translation>
    </message>
    <message>
        <source>Colour &amp;map:</source>
        <translation>&amp;Palette :</translation>
    </message>
    <message>
        <source>From the &amp;values</source>
        <translation>D&apos;après les &amp;valeurs</translation>
    </message>
    <message>
        <source>The range runs from the least to the greatest value of the active cells</source>
        <translation>L&apos;intervalle va de la plus petite à la plus grande valeur des mailles actives</translation>
    </message>
    <message>
        <source>Range:</source>
        <translation>Intervalle :</translation>
    </message>
    <message>
        <source>Value of the low end; a greater one than the high end turns the map round</source>
        <translation>Valeur du bas ; plus grande que celle du haut, elle retourne la palette</translation>
    </message>
    <message>
        <source>Value of the high end</source>
        <translation>Valeur du haut</translation>
    </message>
    <message>
        <source>&amp;Low:</source>
        <translation>&amp;Bas :</translation>
    </message>
    <message>
        <source>&amp;High:</source>
        <translation>&amp;Haut :</translation>
    </message>
    <message>
        <source>How the colours are spread over the range</source>
        <translation>Comment les couleurs se répartissent sur l&apos;intervalle</translation>
    </message>
    <message>
        <source>Automatic</source>
        <translation>Automatique</translation>
    </message>
    <message>
        <source>Linear</source>
        <translation>Linéaire</translation>
    </message>
    <message>
        <source>Logarithmic</source>
        <translation>Logarithmique</translation>
    </message>
    <message>
        <source>&amp;Scale:</source>
        <translation>É&amp;chelle :</translation>
    </message>
    <message>
        <source>&amp;Grey</source>
        <translation>&amp;Gris</translation>
    </message>
    <message>
        <source>Values beyond the range are grey; otherwise they take the colour of the nearer end</source>
        <translation>Les valeurs hors de l&apos;intervalle sont grises ; sinon elles prennent la couleur du bout le plus proche</translation>
    </message>
    <message>
        <source>Outside the range:</source>
        <translation>Hors de l&apos;intervalle :</translation>
    </message>
    <message>
        <source>Shows the cells so and closes the window</source>
        <translation>Montre les mailles ainsi et ferme la fenêtre</translation>
    </message>
    <message>
        <source>Takes back what was applied and closes the window</source>
        <translation>Reprend ce qui a été appliqué et ferme la fenêtre</translation>
    </message>
    <message>
        <source>Shows the cells so</source>
        <translation>Montre les mailles ainsi</translation>
    </message>
    <message>
        <source>Range and scale from the values, the first colour map</source>
        <translation>Intervalle et échelle d&apos;après les valeurs, première palette</translation>
    </message>
    <message>
        <source>The low end is not a number.</source>
        <translation>Le bas n&apos;est pas un nombre.</translation>
    </message>
    <message>
        <source>The high end is not a number.</source>
        <translation>Le haut n&apos;est pas un nombre.</translation>
    </message>
    <message>
        <source>A logarithmic scale needs a range above zero.</source>
        <translation>Une échelle logarithmique demande un intervalle au-dessus de zéro.</translation>
    </message>
    <message>
        <source>The first colours of all codes</source>
        <translation>Les couleurs d&apos;origine de tous les codes</translation>
    </message>
    <message>
        <source>The codes and their colours; a double click changes the colour</source>
        <translation>Les codes et leurs couleurs ; un double clic change la couleur</translation>
    </message>
    <message>
        <source>&amp;Change Colour...</source>
        <translation>&amp;Changer la couleur...</translation>
    </message>
    <message>
        <source>Chooses the colour of the selected code</source>
        <translation>Choisit la couleur du code sélectionné</translation>
    </message>
    <message>
        <source>Colour of %1</source>
        <translation>Couleur de %1</translation>
    </message>
</context>
<context>
    <name>lodex::ComparisonWindow</name>
    <message>
        <source>Mean by volume</source>
        <translation>Moyenne par volume</translation>
    </message>
    <message>
        <source>Compare fine with coarse</source>
        <translation>Comparer fin et grossier</translation>
    </message>
    <message>
        <source>The fine grid</source>
        <translation>La grille fine</translation>
    </message>
    <message>
        <source>The property of the fine grid</source>
        <translation>La propriété de la grille fine</translation>
    </message>
    <message>
        <source>The coarse grid</source>
        <translation>La grille grossière</translation>
    </message>
    <message>
        <source>The property of the coarse grid</source>
        <translation>La propriété de la grille grossière</translation>
    </message>
    <message>
        <source>How fine cells are matched to coarse cells</source>
        <translation>Comment les mailles fines sont associées aux mailles grossières</translation>
    </message>
    <message>
        <source>&amp;Fine grid, property</source>
        <translation>Grille &amp;fine, propriété</translation>
    </message>
    <message>
        <source>&amp;Coarse grid, property</source>
        <translation>Grille &amp;grossière, propriété</translation>
    </message>
    <message>
        <source>&amp;Mapper</source>
        <translation>&amp;Association</translation>
    </message>
    <message>
        <source>Com&amp;pare</source>
        <translation>Com&amp;parer</translation>
    </message>
    <message>
        <source>Works out totals, statistics and differences</source>
        <translation>Calcule totaux, statistiques et différences</translation>
    </message>
    <message>
        <source>What</source>
        <translation>Quoi</translation>
    </message>
    <message>
        <source>Fine</source>
        <translation>Fin</translation>
    </message>
    <message>
        <source>Coarse</source>
        <translation>Grossier</translation>
    </message>
    <message>
        <source>Change</source>
        <translation>Écart</translation>
    </message>
    <message>
        <source>Choose two grids and their properties, then press Compare</source>
        <translation>Choisissez deux grilles et leurs propriétés, puis Comparer</translation>
    </message>
    <message>
        <source>Show the &amp;difference</source>
        <translation>Montrer la &amp;différence</translation>
    </message>
    <message>
        <source>Makes the difference a property of the coarse grid and shows it</source>
        <translation>Fait de la différence une propriété de la grille grossière et la montre</translation>
    </message>
    <message>
        <source>Copy &amp;table</source>
        <translation>Copier le &amp;tableau</translation>
    </message>
    <message>
        <source>Copies the table for a spreadsheet</source>
        <translation>Copie le tableau pour un tableur</translation>
    </message>
    <message>
        <source>&amp;Save table...</source>
        <translation>&amp;Enregistrer le tableau...</translation>
    </message>
    <message>
        <source>Saves the table as comma-separated values</source>
        <translation>Enregistre le tableau en valeurs séparées par des virgules</translation>
    </message>
    <message>
        <source>Choose two different grids.</source>
        <translation>Choisissez deux grilles différentes.</translation>
    </message>
    <message>
        <source>Choose a property of each grid.</source>
        <translation>Choisissez une propriété de chaque grille.</translation>
    </message>
    <message>
        <source>Comparing</source>
        <translation>Comparaison</translation>
    </message>
    <message>
        <source>Cancelled.</source>
        <translation>Annulé.</translation>
    </message>
    <message>
        <source>Cells</source>
        <translation>Mailles</translation>
    </message>
    <message>
        <source>Bulk volume</source>
        <translation>Volume de roche</translation>
    </message>
    <message>
        <source>Sum of value × volume</source>
        <translation>Somme valeur × volume</translation>
    </message>
    <message>
        <source>Standard deviation</source>
        <translation>Écart type</translation>
    </message>
    <message>
        <source>Minimum</source>
        <translation>Minimum</translation>
    </message>
    <message>
        <source>P10</source>
        <translation>P10</translation>
    </message>
    <message>
        <source>P50</source>
        <translation>P50</translation>
    </message>
    <message>
        <source>P90</source>
        <translation>P90</translation>
    </message>
    <message>
        <source>Maximum</source>
        <translation>Maximum</translation>
    </message>
    <message>
        <source>Mean of the fine cells</source>
        <translation>Moyenne des mailles fines</translation>
    </message>
    <message>
        <source>Coarse value</source>
        <translation>Valeur grossière</translation>
    </message>
    <message>
        <source>No coarse cell has fine cells with values.</source>
        <translation>Aucune maille grossière n&apos;a de mailles fines avec des valeurs.</translation>
    </message>
    <message>
        <source>%1 coarse cells compared. Mean difference %2, mean absolute difference %3, largest %4 at cell (%5, %6, %7).</source>
        <translation>%1 mailles grossières comparées. Différence moyenne %2, différence absolue moyenne %3, la plus grande %4 à la maille (%5, %6, %7).</translation>
    </message>
    <message>
        <source>The fine cells that belong to a coarse cell beside the coarse cells that have fine ones</source>
        <translation>Les mailles fines qui appartiennent à une maille grossière à côté des grossières qui en ont</translation>
    </message>
    <message>
        <source>Closes this window</source>
        <translation>Ferme cette fenêtre</translation>
    </message>
</context>
<context>
    <name>lodex::ConsoleEdit</name>
    <message>
        <source>Command</source>
        <translation>Commande</translation>
    </message>
    <message>
        <source>Command, for example: lodex help</source>
        <translation>Commande, par exemple : lodex help</translation>
    </message>
    <message>
        <source>Enter runs the command, Up and Down bring back former ones, Tab completes</source>
        <translation>Entrée lance la commande, Haut et Bas ramènent les précédentes, Tab complète</translation>
    </message>
</context>
<context>
    <name>lodex::DisplayPanel</name>
    <message>
        <source>Colours</source>
        <translation>Couleurs</translation>
    </message>
    <message>
        <source>What the cells are coloured by</source>
        <translation>D&apos;après quoi les mailles sont colorées</translation>
    </message>
    <message>
        <source>&amp;Legend...</source>
        <translation>&amp;Légende...</translation>
    </message>
    <message>
        <source>Range, clipping, logarithm and colour map of the property</source>
        <translation>Intervalle, limites, logarithme et palette de la propriété</translation>
    </message>
    <message>
        <source>Show legend</source>
        <translation>Montrer la légende</translation>
    </message>
    <message>
        <source>Whether the colours are explained in the view</source>
        <translation>Si les couleurs sont expliquées dans la vue</translation>
    </message>
    <message>
        <source>Slices</source>
        <translation>Tranches</translation>
    </message>
    <message>
        <source>from</source>
        <translation>de</translation>
    </message>
    <message>
        <source>to</source>
        <translation>à</translation>
    </message>
    <message>
        <source>Shows only some cells along %1</source>
        <translation>Ne montre que certaines mailles selon %1</translation>
    </message>
    <message>
        <source>First cell along %1 that is shown, from 1</source>
        <translation>Première maille montrée selon %1, à partir de 1</translation>
    </message>
    <message>
        <source>Last cell along %1 that is shown</source>
        <translation>Dernière maille montrée selon %1</translation>
    </message>
    <message>
        <source>Moves the slice along %1</source>
        <translation>Déplace la tranche selon %1</translation>
    </message>
    <message>
        <source>in all of them</source>
        <translation>dans toutes</translation>
    </message>
    <message>
        <source>Shows the cells that lie in every slice</source>
        <translation>Montre les mailles présentes dans toutes les tranches</translation>
    </message>
    <message>
        <source>in any of them</source>
        <translation>dans l&apos;une d&apos;elles</translation>
    </message>
    <message>
        <source>Shows the cells that lie in at least one slice: a fence</source>
        <translation>Montre les mailles présentes dans au moins une tranche : un écorché</translation>
    </message>
    <message>
        <source>Threshold</source>
        <translation>Seuil</translation>
    </message>
    <message>
        <source>Shows only cells by the value of a property</source>
        <translation>Ne montre les mailles que selon la valeur d&apos;une propriété</translation>
    </message>
    <message>
        <source>The property that decides</source>
        <translation>La propriété qui décide</translation>
    </message>
    <message>
        <source>Least value that is shown; empty: any</source>
        <translation>Plus petite valeur montrée ; vide : toutes</translation>
    </message>
    <message>
        <source>Greatest value that is shown; empty: any</source>
        <translation>Plus grande valeur montrée ; vide : toutes</translation>
    </message>
    <message>
        <source>any</source>
        <translation>toutes</translation>
    </message>
    <message>
        <source>Codes that are shown</source>
        <translation>Codes montrés</translation>
    </message>
    <message>
        <source>Cells</source>
        <translation>Mailles</translation>
    </message>
    <message>
        <source>Shows only the cells of a region</source>
        <translation>Ne montre que les mailles d&apos;une région</translation>
    </message>
    <message>
        <source>Inactive cells</source>
        <translation>Mailles inactives</translation>
    </message>
    <message>
        <source>Shows inactive cells as well</source>
        <translation>Montre aussi les mailles inactives</translation>
    </message>
    <message>
        <source>Cell edges</source>
        <translation>Arêtes</translation>
    </message>
    <message>
        <source>Lines along the edges of the cells; left out where there are very many</source>
        <translation>Lignes le long des arêtes des mailles ; omises quand il y en a trop</translation>
    </message>
    <message>
        <source>Outline</source>
        <translation>Contour</translation>
    </message>
    <message>
        <source>Lines round the whole grid</source>
        <translation>Lignes autour de toute la grille</translation>
    </message>
    <message>
        <source>Painted sections</source>
        <translation>Sections peintes</translation>
    </message>
    <message>
        <source>Lets sections that a dialog paints stand out</source>
        <translation>Fait ressortir les sections peintes par une fenêtre</translation>
    </message>
    <message>
        <source>&amp;Region</source>
        <translation>&amp;Région</translation>
    </message>
    <message>
        <source>View</source>
        <translation>Vue</translation>
    </message>
    <message>
        <source>How much depths are stretched</source>
        <translation>De combien les profondeurs sont étirées</translation>
    </message>
    <message>
        <source>Where the eye is</source>
        <translation>Où se trouve l&apos;œil</translation>
    </message>
    <message>
        <source>Oblique</source>
        <translation>Oblique</translation>
    </message>
    <message>
        <source>Top</source>
        <translation>Dessus</translation>
    </message>
    <message>
        <source>Bottom</source>
        <translation>Dessous</translation>
    </message>
    <message>
        <source>North</source>
        <translation>Nord</translation>
    </message>
    <message>
        <source>South</source>
        <translation>Sud</translation>
    </message>
    <message>
        <source>East</source>
        <translation>Est</translation>
    </message>
    <message>
        <source>West</source>
        <translation>Ouest</translation>
    </message>
    <message>
        <source>Orthographic</source>
        <translation>Orthographique</translation>
    </message>
    <message>
        <source>Parallel lines stay parallel</source>
        <translation>Les parallèles restent parallèles</translation>
    </message>
    <message>
        <source>Axes</source>
        <translation>Axes</translation>
    </message>
    <message>
        <source>Shows coordinates and the north arrow</source>
        <translation>Montre les coordonnées et la flèche du nord</translation>
    </message>
    <message>
        <source>Brings the whole grid into view</source>
        <translation>Amène toute la grille dans la vue</translation>
    </message>
    <message>
        <source>Save p&amp;icture...</source>
        <translation>Enregistrer l&apos;&amp;image...</translation>
    </message>
    <message>
        <source>Saves the view as a picture</source>
        <translation>Enregistre la vue comme image</translation>
    </message>
    <message>
        <source>&amp;All cells</source>
        <translation>Toutes les m&amp;ailles</translation>
    </message>
    <message>
        <source>No slices, no threshold, no region</source>
        <translation>Ni tranches, ni seuil, ni région</translation>
    </message>
    <message>
        <source>&amp;Vertical</source>
        <translation>&amp;Vertical</translation>
    </message>
    <message>
        <source>From</source>
        <translation>Depuis</translation>
    </message>
    <message>
        <source>everywhere</source>
        <translation>partout</translation>
    </message>
    <message>
        <source>unit</source>
        <translation>unité</translation>
    </message>
    <message>
        <source>depth</source>
        <translation>profondeur</translation>
    </message>
    <message>
        <source>one colour</source>
        <translation>une couleur</translation>
    </message>
    <message>
        <source>Save the picture</source>
        <translation>Enregistrer l&apos;image</translation>
    </message>
    <message>
        <source>Pictures (*.png *.jpg);;All files (*)</source>
        <translation>Images (*.png *.jpg);;Tous les fichiers (*)</translation>
    </message>
    <message>
        <source>The picture was saved to %1.</source>
        <translation>L&apos;image a été enregistrée dans %1.</translation>
    </message>
    <message>
        <source>&amp;Fit</source>
        <translation>Ca&amp;drer</translation>
    </message>
    <message>
        <source>Only the colours of a property can be edited: choose one to colour by.</source>
        <translation>Seules les couleurs d&apos;une propriété se modifient : choisissez-en une pour colorer.</translation>
    </message>
</context>
<context>
    <name>lodex::FlowUnitPlot</name>
    <message>
        <source>The table has no numbers of this panel yet.</source>
        <translation>Le tableau n&apos;a pas encore de nombres de ce panneau.</translation>
    </message>
    <message>
        <source>Means per K layer, once a property is chosen</source>
        <translation>Moyennes par couche K, dès qu&apos;une propriété est choisie</translation>
    </message>
    <message>
        <source>Means of %1 per K layer, as in the table: of the layer and of the flow unit that it is in</source>
        <translation>Moyennes de %1 par couche K, comme dans le tableau : de la couche et de son unité d&apos;écoulement</translation>
    </message>
    <message>
        <source>Layer mean</source>
        <translation>Moyenne de couche</translation>
    </message>
    <message>
        <source>Flow unit mean</source>
        <translation>Moyenne d&apos;unité</translation>
    </message>
</context>
<context>
    <name>lodex::FlowUnitProfile</name>
    <message>
        <source>K Profile of the Flow Units</source>
        <translation>Profil K des unités d&apos;écoulement</translation>
    </message>
    <message>
        <source>Layer mean</source>
        <translation>Moyenne de couche</translation>
    </message>
    <message>
        <source>The mean of the values in one K layer</source>
        <translation>La moyenne des valeurs d&apos;une couche K</translation>
    </message>
    <message>
        <source>Flow unit mean</source>
        <translation>Moyenne d&apos;unité</translation>
    </message>
    <message>
        <source>The mean of the values in the flow unit that the K layer is in</source>
        <translation>La moyenne des valeurs de l&apos;unité d&apos;écoulement de la couche K</translation>
    </message>
</context>
<context>
    <name>lodex::HelpWindow</name>
    <message>
        <source>Help</source>
        <translation>Aide</translation>
    </message>
    <message>
        <source>Back</source>
        <translation>Retour</translation>
    </message>
    <message>
        <source>Forward</source>
        <translation>Avancer</translation>
    </message>
    <message>
        <source>Contents</source>
        <translation>Sommaire</translation>
    </message>
    <message>
        <source>Search</source>
        <translation>Chercher</translation>
    </message>
    <message>
        <source>Words to look for; Enter goes to the next place on the page</source>
        <translation>Mots à chercher ; Entrée va au prochain endroit de la page</translation>
    </message>
</context>
<context>
    <name>lodex::ItemDetails</name>
    <message>
        <source>Details</source>
        <translation>Détails</translation>
    </message>
    <message>
        <source>Details of the selected object</source>
        <translation>Détails de l&apos;objet choisi</translation>
    </message>
    <message>
        <source>What</source>
        <translation>Quoi</translation>
    </message>
    <message>
        <source>Value</source>
        <translation>Valeur</translation>
    </message>
    <message>
        <source>Grid</source>
        <translation>Grille</translation>
    </message>
    <message>
        <source>I × J × K</source>
        <translation>I × J × K</translation>
    </message>
    <message>
        <source>%1 × %2 × %3</source>
        <translation>%1 × %2 × %3</translation>
    </message>
    <message>
        <source>Cells</source>
        <translation>Mailles</translation>
    </message>
    <message>
        <source>Active cells</source>
        <translation>Mailles actives</translation>
    </message>
    <message>
        <source>Bulk volume, active</source>
        <translation>Volume de roche, actif</translation>
    </message>
    <message>
        <source>Properties</source>
        <translation>Propriétés</translation>
    </message>
    <message>
        <source>Regions</source>
        <translation>Régions</translation>
    </message>
    <message>
        <source>Units</source>
        <translation>Unités</translation>
    </message>
    <message>
        <source>Fault segments</source>
        <translation>Segments de faille</translation>
    </message>
    <message>
        <source>Length unit</source>
        <translation>Unité de longueur</translation>
    </message>
    <message>
        <source>Made from</source>
        <translation>Faite à partir de</translation>
    </message>
    <message>
        <source>%1 (%2 × %3 × %4)</source>
        <translation>%1 (%2 × %3 × %4)</translation>
    </message>
    <message>
        <source>Property</source>
        <translation>Propriété</translation>
    </message>
    <message>
        <source>Kind</source>
        <translation>Sorte</translation>
    </message>
    <message>
        <source>discrete</source>
        <translation>discrète</translation>
    </message>
    <message>
        <source>continuous</source>
        <translation>continue</translation>
    </message>
    <message>
        <source>Unit of measure</source>
        <translation>Unité de mesure</translation>
    </message>
    <message>
        <source>Values</source>
        <translation>Valeurs</translation>
    </message>
    <message>
        <source>on nodes</source>
        <translation>aux nœuds</translation>
    </message>
    <message>
        <source>Active cells with a value</source>
        <translation>Mailles actives avec une valeur</translation>
    </message>
    <message>
        <source>Minimum</source>
        <translation>Minimum</translation>
    </message>
    <message>
        <source>Mean</source>
        <translation>Moyenne</translation>
    </message>
    <message>
        <source>Maximum</source>
        <translation>Maximum</translation>
    </message>
    <message>
        <source>Codes</source>
        <translation>Codes</translation>
    </message>
    <message>
        <source>%1 cells</source>
        <translation>%1 mailles</translation>
    </message>
    <message>
        <source>Region</source>
        <translation>Région</translation>
    </message>
    <message>
        <source>Comes from</source>
        <translation>Vient de</translation>
    </message>
    <message>
        <source>the model</source>
        <translation>du modèle</translation>
    </message>
    <message>
        <source>the user</source>
        <translation>de l&apos;utilisateur</translation>
    </message>
    <message>
        <source>Unit</source>
        <translation>Unité</translation>
    </message>
    <message>
        <source>K layers</source>
        <translation>Couches K</translation>
    </message>
    <message>
        <source>%1 to %2</source>
        <translation>%1 à %2</translation>
    </message>
    <message>
        <source>Layering</source>
        <translation>Litage</translation>
    </message>
    <message>
        <source>proportional</source>
        <translation>proportionnel</translation>
    </message>
    <message>
        <source>parallel to the base</source>
        <translation>parallèle à la base</translation>
    </message>
    <message>
        <source>parallel to the top</source>
        <translation>parallèle au toit</translation>
    </message>
    <message>
        <source>Cell thickness</source>
        <translation>Épaisseur des mailles</translation>
    </message>
    <message>
        <source>Activity</source>
        <translation>Activité</translation>
    </message>
    <message>
        <source>%1 %2 to %3</source>
        <translation>%1 %2 à %3</translation>
    </message>
    <message>
        <source>merged by %1</source>
        <translation>fusionnées par %1</translation>
    </message>
    <message>
        <source>coarsened</source>
        <translation>rendue grossière</translation>
    </message>
    <message>
        <source>coarsening to apply</source>
        <translation>regroupement à appliquer</translation>
    </message>
    <message>
        <source>refined</source>
        <translation>raffinée</translation>
    </message>
    <message>
        <source>divided by %1</source>
        <translation>divisées par %1</translation>
    </message>
</context>
<context>
    <name>lodex::JournalView</name>
    <message>
        <source>Save as Script...</source>
        <translation>Enregistrer comme script...</translation>
    </message>
    <message>
        <source>Journal</source>
        <translation>Journal</translation>
    </message>
    <message>
        <source>Statements that change a model are listed here.</source>
        <translation>Les instructions qui changent un modèle sont listées ici.</translation>
    </message>
    <message>
        <source>Saves the journal as a command script, which makes the same models again</source>
        <translation>Enregistre le journal comme script de commandes, qui refait les mêmes modèles</translation>
    </message>
    <message>
        <source>Save the journal as a script</source>
        <translation>Enregistrer le journal comme script</translation>
    </message>
    <message>
        <source>Command scripts (*.lodex);;All files (*)</source>
        <translation>Scripts de commandes (*.lodex);;Tous les fichiers (*)</translation>
    </message>
    <message>
        <source>The journal was saved to %1.</source>
        <translation>Le journal a été enregistré dans %1.</translation>
    </message>
    <message>
        <source>What changed the models, as commands that change them so again</source>
        <translation>Ce qui a changé les modèles, en commandes qui les changent de nouveau ainsi</translation>
    </message>
</context>
<context>
    <name>lodex::LogPanel</name>
    <message>
        <source>Which messages are shown</source>
        <translation>Quels messages sont montrés</translation>
    </message>
    <message>
        <source>All messages</source>
        <translation>Tous les messages</translation>
    </message>
    <message>
        <source>Warnings and errors</source>
        <translation>Avertissements et erreurs</translation>
    </message>
    <message>
        <source>Errors</source>
        <translation>Erreurs</translation>
    </message>
    <message>
        <source>Shows only messages that hold this text</source>
        <translation>Ne montre que les messages qui contiennent ce texte</translation>
    </message>
    <message>
        <source>Find in messages</source>
        <translation>Chercher dans les messages</translation>
    </message>
    <message>
        <source>Copy</source>
        <translation>Copier</translation>
    </message>
    <message>
        <source>Copies the messages that are shown</source>
        <translation>Copie les messages montrés</translation>
    </message>
    <message>
        <source>Clear</source>
        <translation>Effacer</translation>
    </message>
    <message>
        <source>Forgets all messages</source>
        <translation>Oublie tous les messages</translation>
    </message>
</context>
<context>
    <name>lodex::LogView</name>
    <message>
        <source>Messages</source>
        <translation>Messages</translation>
    </message>
    <message>
        <source>warning: %1</source>
        <translation>avertissement : %1</translation>
    </message>
    <message>
        <source>error: %1</source>
        <translation>erreur : %1</translation>
    </message>
    <message>
        <source>Clear</source>
        <translation>Effacer</translation>
    </message>
    <message>
        <source>Messages, commands that were given and their answers</source>
        <translation>Messages, commandes données et leurs réponses</translation>
    </message>
</context>
<context>
    <name>lodex::MainWindow</name>
    <message>
        <source>&amp;Merge SGrid Sections...</source>
        <translation>&amp;Fusionner des sections...</translation>
    </message>
    <message>
        <source>Make a coarser grid by merging cell sections of the selected one</source>
        <translation>Faire une grille plus grossière en fusionnant des sections de mailles de la grille choisie</translation>
    </message>
    <message>
        <source>&amp;Subdivide SGrid Sections...</source>
        <translation>&amp;Subdiviser des sections...</translation>
    </message>
    <message>
        <source>Make a finer grid by subdividing cell sections of the selected one</source>
        <translation>Faire une grille plus fine en subdivisant des sections de mailles de la grille choisie</translation>
    </message>
    <message>
        <source>Create SGrid for &amp;Upscaling...</source>
        <translation>Créer une grille &amp;grossière...</translation>
    </message>
    <message>
        <source>Make a coarser grid from the whole of the selected one</source>
        <translation>Faire une grille plus grossière à partir de toute la grille choisie</translation>
    </message>
    <message>
        <source>Make a finer grid from the whole of the selected one</source>
        <translation>Faire une grille plus fine à partir de toute la grille choisie</translation>
    </message>
    <message>
        <source>Upscale &amp;Property...</source>
        <translation>Mettre une &amp;propriété à l&apos;échelle...</translation>
    </message>
    <message>
        <source>Carry a property of the selected grid to a coarser grid</source>
        <translation>Porter une propriété de la grille choisie sur une grille plus grossière</translation>
    </message>
    <message>
        <source>&amp;Flow Unit Analysis...</source>
        <translation>Analyse des &amp;unités d&apos;écoulement...</translation>
    </message>
    <message>
        <source>Group the K layers of the selected grid into flow units</source>
        <translation>Regrouper les couches K de la grille choisie en unités d&apos;écoulement</translation>
    </message>
    <message>
        <source>The path %1 holds a character that commands cannot hold.</source>
        <translation>Le chemin %1 contient un caractère que les commandes ne peuvent contenir.</translation>
    </message>
    <message>
        <source>Camera</source>
        <translation>Caméra</translation>
    </message>
    <message>
        <source>Section</source>
        <translation>Coupe</translation>
    </message>
    <message>
        <source>The selected grid in 3D</source>
        <translation>La grille choisie en 3D</translation>
    </message>
    <message>
        <source>A vertical section through the selected grid</source>
        <translation>Une coupe verticale de la grille choisie</translation>
    </message>
    <message>
        <source>Picked cell</source>
        <translation>Maille pointée</translation>
    </message>
    <message>
        <source>A click on a cell in the camera shows its numbers here.</source>
        <translation>Un clic sur une maille dans la caméra montre ses nombres ici.</translation>
    </message>
    <message>
        <source>The cell that was picked last</source>
        <translation>La maille pointée en dernier</translation>
    </message>
    <message>
        <source>Messages</source>
        <translation>Messages</translation>
    </message>
    <message>
        <source>Journal</source>
        <translation>Journal</translation>
    </message>
    <message>
        <source>What the program has to say, commands and their answers</source>
        <translation>Ce que le programme a à dire, les commandes et leurs réponses</translation>
    </message>
    <message>
        <source>The statements that made the models as they are</source>
        <translation>Les instructions qui ont fait les modèles tels qu&apos;ils sont</translation>
    </message>
    <message>
        <source>C&amp;ommand</source>
        <translation>C&amp;ommande</translation>
    </message>
    <message>
        <source>Objects</source>
        <translation>Objets</translation>
    </message>
    <message>
        <source>Details</source>
        <translation>Détails</translation>
    </message>
    <message>
        <source>Cell</source>
        <translation>Maille</translation>
    </message>
    <message>
        <source>Display</source>
        <translation>Affichage</translation>
    </message>
    <message>
        <source>Messages and commands</source>
        <translation>Messages et commandes</translation>
    </message>
    <message>
        <source>Opens the comparison of the fine property with the coarse one</source>
        <translation>Ouvre la comparaison de la propriété fine avec la grossière</translation>
    </message>
    <message>
        <source>%1 (Esc ends this)</source>
        <translation>%1 (Échap y met fin)</translation>
    </message>
    <message>
        <source>Done in %1 s</source>
        <translation>Fait en %1 s</translation>
    </message>
    <message>
        <source>%1 of %2 files could not be imported</source>
        <translation>%1 fichiers sur %2 n&apos;ont pas pu être importés</translation>
    </message>
    <message>
        <source>%1: %2</source>
        <translation>%1 : %2</translation>
    </message>
    <message>
        <source>script %1</source>
        <translation>script %1</translation>
    </message>
    <message>
        <source>Compare %1 of %2 with %3 of %4</source>
        <translation>Comparer %1 de %2 avec %3 de %4</translation>
    </message>
    <message>
        <source>A command is running; cancel it first.</source>
        <translation>Une commande est en cours ; annulez-la d&apos;abord.</translation>
    </message>
    <message>
        <source>&amp;File</source>
        <translation>&amp;Fichier</translation>
    </message>
    <message>
        <source>&amp;Grid</source>
        <translation>&amp;Grille</translation>
    </message>
    <message>
        <source>&amp;View</source>
        <translation>&amp;Vue</translation>
    </message>
    <message>
        <source>&amp;Help</source>
        <translation>&amp;Aide</translation>
    </message>
    <message>
        <source>&amp;Import...</source>
        <translation>&amp;Importer...</translation>
    </message>
    <message>
        <source>Read grids from files</source>
        <translation>Lire des grilles dans des fichiers</translation>
    </message>
    <message>
        <source>&amp;Export...</source>
        <translation>&amp;Exporter...</translation>
    </message>
    <message>
        <source>Write the selected grid to a file</source>
        <translation>Écrire la grille choisie dans un fichier</translation>
    </message>
    <message>
        <source>&amp;Run Script...</source>
        <translation>Lancer un &amp;script...</translation>
    </message>
    <message>
        <source>Run the commands of a script</source>
        <translation>Lancer les commandes d&apos;un script</translation>
    </message>
    <message>
        <source>Save what was done as a script that makes the same models again</source>
        <translation>Enregistrer ce qui a été fait comme script qui refait les mêmes modèles</translation>
    </message>
    <message>
        <source>&amp;Quit</source>
        <translation>&amp;Quitter</translation>
    </message>
    <message>
        <source>Close the workbench</source>
        <translation>Fermer l&apos;atelier</translation>
    </message>
    <message>
        <source>Show in &amp;Camera</source>
        <translation>Montrer dans la &amp;caméra</translation>
    </message>
    <message>
        <source>Show the selected object: colour by a property, only the cells of a region or unit</source>
        <translation>Montrer l&apos;objet choisi : colorer par une propriété, seulement les mailles d&apos;une région ou d&apos;une unité</translation>
    </message>
    <message>
        <source>&amp;Apply Coarsening</source>
        <translation>&amp;Appliquer le regroupement</translation>
    </message>
    <message>
        <source>Make the grid that the selected coarsening describes, with properties and regions</source>
        <translation>Faire la grille que le regroupement choisi décrit, avec propriétés et régions</translation>
    </message>
    <message>
        <source>&amp;Numbers...</source>
        <translation>&amp;Nombres...</translation>
    </message>
    <message>
        <source>Histogram, K profile, cross plot and statistics of the selected grid&apos;s properties</source>
        <translation>Histogramme, profil K, graphe croisé et statistiques des propriétés de la grille choisie</translation>
    </message>
    <message>
        <source>Compare Fine &amp;with Coarse...</source>
        <translation>Co&amp;mparer fin et grossier...</translation>
    </message>
    <message>
        <source>A property of a fine grid beside one of a coarse grid</source>
        <translation>Une propriété d&apos;une grille fine à côté d&apos;une d&apos;une grille grossière</translation>
    </message>
    <message>
        <source>&amp;Report...</source>
        <translation>Rap&amp;port...</translation>
    </message>
    <message>
        <source>Show counts, volumes and statistics of the selected grid</source>
        <translation>Montrer décomptes, volumes et statistiques de la grille choisie</translation>
    </message>
    <message>
        <source>R&amp;ename...</source>
        <translation>R&amp;enommer...</translation>
    </message>
    <message>
        <source>&amp;Destroy</source>
        <translation>&amp;Détruire</translation>
    </message>
    <message>
        <source>Show &amp;Everything</source>
        <translation>Tout m&amp;ontrer</translation>
    </message>
    <message>
        <source>Bring the whole grid into the camera&apos;s view</source>
        <translation>Amener toute la grille dans la vue de la caméra</translation>
    </message>
    <message>
        <source>&amp;All Cells</source>
        <translation>Toutes les m&amp;ailles</translation>
    </message>
    <message>
        <source>No slices, no threshold, no region</source>
        <translation>Ni tranches, ni seuil, ni région</translation>
    </message>
    <message>
        <source>Range, clipping, logarithm and colour map of the property that is shown</source>
        <translation>Intervalle, limites, logarithme et palette de la propriété montrée</translation>
    </message>
    <message>
        <source>Save &amp;Picture...</source>
        <translation>Enregistrer l&apos;&amp;image...</translation>
    </message>
    <message>
        <source>Save the camera&apos;s view as a picture</source>
        <translation>Enregistrer la vue de la caméra comme image</translation>
    </message>
    <message>
        <source>End Tool</source>
        <translation>Finir l&apos;outil</translation>
    </message>
    <message>
        <source>No dialog waits for a cell any more</source>
        <translation>Plus aucune fenêtre n&apos;attend de maille</translation>
    </message>
    <message>
        <source>Go to &amp;Command Line</source>
        <translation>Aller à la ligne de &amp;commande</translation>
    </message>
    <message>
        <source>Type a command</source>
        <translation>Taper une commande</translation>
    </message>
    <message>
        <source>&amp;Contents</source>
        <translation>&amp;Sommaire</translation>
    </message>
    <message>
        <source>Open the help</source>
        <translation>Ouvrir l&apos;aide</translation>
    </message>
    <message>
        <source>Actions and &amp;Shortcuts...</source>
        <translation>Actions et &amp;raccourcis...</translation>
    </message>
    <message>
        <source>Everything the menus can do, with its keys</source>
        <translation>Tout ce que peuvent les menus, avec les touches</translation>
    </message>
    <message>
        <source>C&amp;ommands</source>
        <translation>C&amp;ommandes</translation>
    </message>
    <message>
        <source>List the commands in the messages</source>
        <translation>Lister les commandes dans les messages</translation>
    </message>
    <message>
        <source>&amp;About</source>
        <translation>À &amp;propos</translation>
    </message>
    <message>
        <source>What this program is</source>
        <translation>Ce qu&apos;est ce programme</translation>
    </message>
    <message>
        <source>Tools</source>
        <translation>Outils</translation>
    </message>
    <message>
        <source>Re&amp;cent Files</source>
        <translation>Fichiers ré&amp;cents</translation>
    </message>
    <message>
        <source>No files yet</source>
        <translation>Pas encore de fichiers</translation>
    </message>
    <message>
        <source>Shows or hides this part of the window</source>
        <translation>Montre ou cache cette partie de la fenêtre</translation>
    </message>
    <message>
        <source>&amp;Reset Layout</source>
        <translation>&amp;Rétablir la disposition</translation>
    </message>
    <message>
        <source>Brings all parts of the window back to their first places</source>
        <translation>Ramène toutes les parties de la fenêtre à leurs premières places</translation>
    </message>
    <message>
        <source>&amp;Theme</source>
        <translation>&amp;Thème</translation>
    </message>
    <message>
        <source>Light or dark colours</source>
        <translation>Couleurs claires ou sombres</translation>
    </message>
    <message>
        <source>As the &amp;desktop</source>
        <translation>Comme le &amp;bureau</translation>
    </message>
    <message>
        <source>&amp;Light</source>
        <translation>&amp;Clair</translation>
    </message>
    <message>
        <source>D&amp;ark</source>
        <translation>&amp;Sombre</translation>
    </message>
    <message>
        <source>&amp;Language</source>
        <translation>Lan&amp;gue</translation>
    </message>
    <message>
        <source>Language of menus and windows; commands stay as they are</source>
        <translation>Langue des menus et fenêtres ; les commandes restent telles quelles</translation>
    </message>
    <message>
        <source>Models (%1)</source>
        <translation>Modèles (%1)</translation>
    </message>
    <message>
        <source>All files (*)</source>
        <translation>Tous les fichiers (*)</translation>
    </message>
    <message>
        <source>Import</source>
        <translation>Importer</translation>
    </message>
    <message>
        <source>Export %1</source>
        <translation>Exporter %1</translation>
    </message>
    <message>
        <source>Run a script</source>
        <translation>Lancer un script</translation>
    </message>
    <message>
        <source>Command scripts (*.lodex *.txt);;All files (*)</source>
        <translation>Scripts de commandes (*.lodex *.txt);;Tous les fichiers (*)</translation>
    </message>
    <message>
        <source>Rename</source>
        <translation>Renommer</translation>
    </message>
    <message>
        <source>New name of the grid &quot;%1&quot;</source>
        <translation>Nouveau nom de la grille « %1 »</translation>
    </message>
    <message>
        <source>Destroy</source>
        <translation>Détruire</translation>
    </message>
    <message>
        <source>Destroy the grid &quot;%1&quot; with its properties and regions?</source>
        <translation>Détruire la grille « %1 » avec ses propriétés et régions ?</translation>
    </message>
    <message>
        <source>Keep</source>
        <translation>Garder</translation>
    </message>
    <message>
        <source>About</source>
        <translation>À propos</translation>
    </message>
    <message>
        <source>&lt;h3&gt;lodex workbench %1&lt;/h3&gt;&lt;p&gt;Coarsens and refines stratigraphic grids: merges cell sections, carries properties and regions over, and keeps a journal that makes the same models again.&lt;/p&gt;</source>
        <translation>&lt;h3&gt;atelier lodex %1&lt;/h3&gt;&lt;p&gt;Regroupe et raffine des grilles stratigraphiques : fusionne des sections de mailles, transporte propriétés et régions, et tient un journal qui refait les mêmes modèles.&lt;/p&gt;</translation>
    </message>
    <message>
        <source>Create SGrid for D&amp;ownscaling...</source>
        <translation>Créer une grille &amp;raffinée...</translation>
    </message>
    <message>
        <source>Colour Le&amp;gend...</source>
        <translation>&amp;Légende des couleurs...</translation>
    </message>
    <message>
        <source>Keeping a copy for recovery</source>
        <translation>Copie de récupération en cours</translation>
    </message>
    <message>
        <source>Cancel</source>
        <translation>Annuler</translation>
    </message>
    <message>
        <source>Stops this copy; it is tried again later</source>
        <translation>Arrête cette copie ; elle est reprise plus tard</translation>
    </message>
    <message>
        <source>&amp;New Project</source>
        <translation>&amp;Nouveau projet</translation>
    </message>
    <message>
        <source>Start anew, without grids</source>
        <translation>Recommencer sans grilles</translation>
    </message>
    <message>
        <source>&amp;Open Project...</source>
        <translation>&amp;Ouvrir un projet...</translation>
    </message>
    <message>
        <source>Open a project file in place of what is there</source>
        <translation>Ouvrir un fichier de projet à la place de ce qui est là</translation>
    </message>
    <message>
        <source>Save &amp;Project</source>
        <translation>Enregistrer le &amp;projet</translation>
    </message>
    <message>
        <source>Save grids, views and journal to the project&apos;s file</source>
        <translation>Enregistrer grilles, vues et journal dans le fichier du projet</translation>
    </message>
    <message>
        <source>Save Project &amp;As...</source>
        <translation>Enregistrer le projet &amp;sous...</translation>
    </message>
    <message>
        <source>Save the project to another file</source>
        <translation>Enregistrer le projet dans un autre fichier</translation>
    </message>
    <message>
        <source>Save &amp;Journal as Script...</source>
        <translation>Enregistrer le &amp;journal comme script...</translation>
    </message>
    <message>
        <source>Give the selected grid, property or region another name</source>
        <translation>Donner un autre nom à la grille, à la propriété ou à la région sélectionnée</translation>
    </message>
    <message>
        <source>Remove the selected grid, property or region</source>
        <translation>Retirer la grille, la propriété ou la région sélectionnée</translation>
    </message>
    <message>
        <source>New name of the property &quot;%1&quot;</source>
        <translation>Nouveau nom de la propriété « %1 »</translation>
    </message>
    <message>
        <source>New name of the region &quot;%1&quot;</source>
        <translation>Nouveau nom de la région « %1 »</translation>
    </message>
    <message>
        <source>Destroy the property &quot;%1&quot;?</source>
        <translation>Détruire la propriété « %1 » ?</translation>
    </message>
    <message>
        <source>Destroy the region &quot;%1&quot;?</source>
        <translation>Détruire la région « %1 » ?</translation>
    </message>
    <message>
        <source>Projects (*.lodex-project);;All files (*)</source>
        <translation>Projets (*.lodex-project);;Tous les fichiers (*)</translation>
    </message>
    <message>
        <source>Recovered</source>
        <translation>Récupéré</translation>
    </message>
    <message>
        <source>Untitled</source>
        <translation>Sans titre</translation>
    </message>
    <message>
        <source>%1[*] - lodex workbench</source>
        <translation>%1[*] - lodex workbench</translation>
    </message>
    <message>
        <source>Unsaved changes</source>
        <translation>Modifications non enregistrées</translation>
    </message>
    <message>
        <source>Save what was done?</source>
        <translation>Enregistrer ce qui a été fait ?</translation>
    </message>
    <message>
        <source>Save the changes to &quot;%1&quot;?</source>
        <translation>Enregistrer les modifications de « %1 » ?</translation>
    </message>
    <message>
        <source>A new project, without grids</source>
        <translation>Un nouveau projet, sans grilles</translation>
    </message>
    <message>
        <source>Open a project</source>
        <translation>Ouvrir un projet</translation>
    </message>
    <message>
        <source>Saved to %1</source>
        <translation>Enregistré dans %1</translation>
    </message>
    <message>
        <source>Save the project</source>
        <translation>Enregistrer le projet</translation>
    </message>
    <message>
        <source>No projects yet</source>
        <translation>Pas encore de projets</translation>
    </message>
    <message>
        <source>&amp;Open the Last One at Start</source>
        <translation>&amp;Ouvrir le dernier au démarrage</translation>
    </message>
    <message>
        <source>Goes on with the last project when the workbench starts without a file</source>
        <translation>Reprend le dernier projet quand l&apos;atelier démarre sans fichier</translation>
    </message>
    <message>
        <source>Recovered. Save the project to keep it.</source>
        <translation>Récupéré. Enregistrez le projet pour le garder.</translation>
    </message>
    <message>
        <source>The language changes when nothing else is going on.</source>
        <translation>La langue change quand rien d&apos;autre n&apos;est en cours.</translation>
    </message>
    <message>
        <source>&amp;Help on This</source>
        <translation>&amp;Aide sur ceci</translation>
    </message>
    <message>
        <source>Open the help on the part of the window that has the keyboard</source>
        <translation>Ouvrir l&apos;aide sur la partie de la fenêtre qui a le clavier</translation>
    </message>
    <message>
        <source>Compare</source>
        <translation>Comparer</translation>
    </message>
    <message>
        <source>Recent Projec&amp;ts</source>
        <translation>Projets récen&amp;ts</translation>
    </message>
    <message>
        <source>What is not saved is lost.</source>
        <translation>Ce qui n&apos;est pas enregistré est perdu.</translation>
    </message>
</context>
<context>
    <name>lodex::NumbersWindow</name>
    <message>
        <source>Numbers of %1</source>
        <translation>Nombres de %1</translation>
    </message>
    <message>
        <source>&amp;Property</source>
        <translation>&amp;Propriété</translation>
    </message>
    <message>
        <source>&amp;Region</source>
        <translation>&amp;Région</translation>
    </message>
    <message>
        <source>The property to look at</source>
        <translation>La propriété à regarder</translation>
    </message>
    <message>
        <source>Cells that count; inactive cells never do</source>
        <translation>Mailles qui comptent ; les inactives jamais</translation>
    </message>
    <message>
        <source>By &amp;volume</source>
        <translation>Par &amp;volume</translation>
    </message>
    <message>
        <source>Cells weigh by their bulk volume instead of being counted</source>
        <translation>Les mailles pèsent par leur volume de roche au lieu d&apos;être comptées</translation>
    </message>
    <message>
        <source>Number of bars of a continuous property</source>
        <translation>Nombre de barres d&apos;une propriété continue</translation>
    </message>
    <message>
        <source>&amp;Logarithmic</source>
        <translation>&amp;Logarithmique</translation>
    </message>
    <message>
        <source>Bars of even width in the logarithm; values of 0 or less are left out</source>
        <translation>Barres de même largeur en logarithme ; les valeurs nulles ou négatives sont omises</translation>
    </message>
    <message>
        <source>Properties whose means per K layer are drawn</source>
        <translation>Propriétés dont les moyennes par couche K sont tracées</translation>
    </message>
    <message>
        <source>Each on its &amp;own range</source>
        <translation>Chacune sur s&amp;on intervalle</translation>
    </message>
    <message>
        <source>Every line fills the width, so that shapes can be compared</source>
        <translation>Chaque ligne remplit la largeur, pour comparer les formes</translation>
    </message>
    <message>
        <source>The property on the vertical axis</source>
        <translation>La propriété de l&apos;axe vertical</translation>
    </message>
    <message>
        <source>Log, &amp;horizontal</source>
        <translation>Log, &amp;horizontal</translation>
    </message>
    <message>
        <source>Logarithmic horizontal axis</source>
        <translation>Axe horizontal logarithmique</translation>
    </message>
    <message>
        <source>Log, v&amp;ertical</source>
        <translation>Log, v&amp;ertical</translation>
    </message>
    <message>
        <source>Logarithmic vertical axis</source>
        <translation>Axe vertical logarithmique</translation>
    </message>
    <message>
        <source>Statistics of the property over the chosen cells</source>
        <translation>Statistiques de la propriété sur les mailles choisies</translation>
    </message>
    <message>
        <source>What</source>
        <translation>Quoi</translation>
    </message>
    <message>
        <source>Value</source>
        <translation>Valeur</translation>
    </message>
    <message>
        <source>&amp;Bars</source>
        <translation>&amp;Barres</translation>
    </message>
    <message>
        <source>Histogram</source>
        <translation>Histogramme</translation>
    </message>
    <message>
        <source>K profile</source>
        <translation>Profil K</translation>
    </message>
    <message>
        <source>A&amp;gainst</source>
        <translation>Con&amp;tre</translation>
    </message>
    <message>
        <source>Cross plot</source>
        <translation>Graphe croisé</translation>
    </message>
    <message>
        <source>&amp;Copy table</source>
        <translation>&amp;Copier le tableau</translation>
    </message>
    <message>
        <source>Copies the numbers of this page for a spreadsheet</source>
        <translation>Copie les nombres de cette page pour un tableur</translation>
    </message>
    <message>
        <source>&amp;Save table...</source>
        <translation>&amp;Enregistrer le tableau...</translation>
    </message>
    <message>
        <source>Saves the numbers of this page as comma-separated values</source>
        <translation>Enregistre les nombres de cette page en valeurs séparées par des virgules</translation>
    </message>
    <message>
        <source>Save p&amp;icture...</source>
        <translation>Enregistrer l&apos;&amp;image...</translation>
    </message>
    <message>
        <source>Saves the plot as a picture</source>
        <translation>Enregistre le graphique comme image</translation>
    </message>
    <message>
        <source>everywhere</source>
        <translation>partout</translation>
    </message>
    <message>
        <source>Bulk volume</source>
        <translation>Volume de roche</translation>
    </message>
    <message>
        <source>Cells</source>
        <translation>Mailles</translation>
    </message>
    <message>
        <source>Defined cells</source>
        <translation>Mailles définies</translation>
    </message>
    <message>
        <source>Undefined cells</source>
        <translation>Mailles indéfinies</translation>
    </message>
    <message>
        <source>Minimum</source>
        <translation>Minimum</translation>
    </message>
    <message>
        <source>P10</source>
        <translation>P10</translation>
    </message>
    <message>
        <source>P50</source>
        <translation>P50</translation>
    </message>
    <message>
        <source>P90</source>
        <translation>P90</translation>
    </message>
    <message>
        <source>Maximum</source>
        <translation>Maximum</translation>
    </message>
    <message>
        <source>Mean</source>
        <translation>Moyenne</translation>
    </message>
    <message>
        <source>Standard deviation</source>
        <translation>Écart type</translation>
    </message>
    <message>
        <source>Sum of value × volume</source>
        <translation>Somme valeur × volume</translation>
    </message>
    <message>
        <source>Sum</source>
        <translation>Somme</translation>
    </message>
    <message>
        <source>Correlation</source>
        <translation>Corrélation</translation>
    </message>
    <message>
        <source>from</source>
        <translation>de</translation>
    </message>
    <message>
        <source>to</source>
        <translation>à</translation>
    </message>
    <message>
        <source>bulk volume</source>
        <translation>volume de roche</translation>
    </message>
    <message>
        <source>cells</source>
        <translation>mailles</translation>
    </message>
    <message>
        <source>cumulative part</source>
        <translation>part cumulée</translation>
    </message>
    <message>
        <source>K layer</source>
        <translation>Couche K</translation>
    </message>
    <message>
        <source>Closes this window</source>
        <translation>Ferme cette fenêtre</translation>
    </message>
</context>
<context>
    <name>lodex::ObjectTree</name>
    <message>
        <source>Objects</source>
        <translation>Objets</translation>
    </message>
    <message>
        <source>The grids of the project and what belongs to them; the right mouse button offers what can be done</source>
        <translation>Les grilles du projet et ce qui leur appartient ; le bouton droit propose ce qu&apos;on peut en faire</translation>
    </message>
    <message>
        <source>Name</source>
        <translation>Nom</translation>
    </message>
    <message>
        <source>Details</source>
        <translation>Détails</translation>
    </message>
    <message>
        <source>%1 × %2 × %3</source>
        <translation>%1 × %2 × %3</translation>
    </message>
    <message>
        <source>Properties</source>
        <translation>Propriétés</translation>
    </message>
    <message>
        <source>discrete</source>
        <translation>discrète</translation>
    </message>
    <message>
        <source>continuous</source>
        <translation>continue</translation>
    </message>
    <message>
        <source>on nodes</source>
        <translation>aux nœuds</translation>
    </message>
    <message>
        <source>Regions</source>
        <translation>Régions</translation>
    </message>
    <message>
        <source>of the model</source>
        <translation>du modèle</translation>
    </message>
    <message>
        <source>Units</source>
        <translation>Unités</translation>
    </message>
    <message>
        <source>K %1 to %2</source>
        <translation>K %1 à %2</translation>
    </message>
    <message>
        <source>Activities</source>
        <translation>Activités</translation>
    </message>
    <message>
        <source>coarsened</source>
        <translation>rendue grossière</translation>
    </message>
    <message>
        <source>refined</source>
        <translation>raffinée</translation>
    </message>
    <message>
        <source>coarsening to apply</source>
        <translation>regroupement à appliquer</translation>
    </message>
    <message>
        <source>There is no grid yet.
Drop a model file here, or choose File, Import.</source>
        <translation>Il n&apos;y a pas encore de grille.
Déposez un fichier de modèle ici, ou choisissez Fichier, Importer.</translation>
    </message>
</context>
<context>
    <name>lodex::Overlay</name>
    <message>
        <source>Vertical exaggeration %1</source>
        <translation>Exagération verticale %1</translation>
    </message>
    <message>
        <source>%1 more</source>
        <translation>%1 de plus</translation>
    </message>
    <message>
        <source>X</source>
        <translation>X</translation>
    </message>
    <message>
        <source>Y</source>
        <translation>Y</translation>
    </message>
    <message>
        <source>Depth</source>
        <translation>Profondeur</translation>
    </message>
    <message>
        <source>E</source>
        <translation>E</translation>
    </message>
    <message>
        <source>N</source>
        <translation>N</translation>
    </message>
    <message>
        <source>Up</source>
        <translation>Haut</translation>
    </message>
</context>
<context>
    <name>lodex::PlotWidget</name>
    <message>
        <source>Nothing to show</source>
        <translation>Rien à montrer</translation>
    </message>
</context>
<context>
    <name>lodex::ProfilePlot</name>
    <message>
        <source>each from its least to its largest mean</source>
        <translation>chacune de sa plus petite à sa plus grande moyenne</translation>
    </message>
    <message>
        <source>K layer</source>
        <translation>Couche K</translation>
    </message>
</context>
<context>
    <name>lodex::QtProgressSink</name>
    <message>
        <source>Cancel</source>
        <translation>Annuler</translation>
    </message>
    <message>
        <source>Working</source>
        <translation>Travail en cours</translation>
    </message>
    <message>
        <source>Stopping ...</source>
        <translation>Arrêt ...</translation>
    </message>
</context>
<context>
    <name>lodex::RecoveryBar</name>
    <message>
        <source>Recover</source>
        <translation>Récupérer</translation>
    </message>
    <message>
        <source>Opens what was kept in place of what is open now</source>
        <translation>Ouvre ce qui a été gardé à la place de ce qui est ouvert</translation>
    </message>
    <message>
        <source>Discard</source>
        <translation>Jeter</translation>
    </message>
    <message>
        <source>Deletes what was kept</source>
        <translation>Supprime ce qui a été gardé</translation>
    </message>
    <message>
        <source>Later</source>
        <translation>Plus tard</translation>
    </message>
    <message>
        <source>Asks again at the next start</source>
        <translation>Redemande au prochain démarrage</translation>
    </message>
    <message>
        <source>no grids</source>
        <translation>pas de grilles</translation>
    </message>
    <message>
        <source>A session ended before it was saved. Kept on %1: %2 (%3).</source>
        <translation>Une session s&apos;est arrêtée sans être enregistrée. Gardé le %1 : %2 (%3).</translation>
    </message>
    <message>
        <source>A session on %4 ended before it was saved. Kept on %1: %2 (%3).</source>
        <translation>Une session sur %4 s&apos;est arrêtée sans être enregistrée. Gardé le %1 : %2 (%3).</translation>
    </message>
</context>
<context>
    <name>lodex::ReportDialog</name>
    <message>
        <source>Report of %1</source>
        <translation>Rapport de %1</translation>
    </message>
    <message>
        <source>What</source>
        <translation>Quoi</translation>
    </message>
    <message>
        <source>Value</source>
        <translation>Valeur</translation>
    </message>
    <message>
        <source>Copy</source>
        <translation>Copier</translation>
    </message>
    <message>
        <source>Copies the report as JSON</source>
        <translation>Copie le rapport en JSON</translation>
    </message>
    <message>
        <source>Save...</source>
        <translation>Enregistrer...</translation>
    </message>
    <message>
        <source>Saves the report as JSON</source>
        <translation>Enregistre le rapport en JSON</translation>
    </message>
    <message>
        <source>Save the report</source>
        <translation>Enregistrer le rapport</translation>
    </message>
    <message>
        <source>JSON files (*.json);;All files (*)</source>
        <translation>Fichiers JSON (*.json);;Tous les fichiers (*)</translation>
    </message>
    <message>
        <source>Numbers of the grid; lengths and volumes in its own unit</source>
        <translation>Nombres de la grille ; longueurs et volumes dans son unité</translation>
    </message>
    <message>
        <source>Closes this window</source>
        <translation>Ferme cette fenêtre</translation>
    </message>
</context>
<context>
    <name>lodex::SectionPanel</name>
    <message>
        <source>J section</source>
        <translation>Coupe J</translation>
    </message>
    <message>
        <source>I section</source>
        <translation>Coupe I</translation>
    </message>
    <message>
        <source>Whether the cells of one J or of one I are shown</source>
        <translation>Si les mailles d&apos;un J ou d&apos;un I sont montrées</translation>
    </message>
    <message>
        <source>Direction of the section</source>
        <translation>Direction de la coupe</translation>
    </message>
    <message>
        <source>Moves the section through the grid</source>
        <translation>Déplace la coupe dans la grille</translation>
    </message>
    <message>
        <source>Section</source>
        <translation>Coupe</translation>
    </message>
    <message>
        <source>Number of the section, from 1</source>
        <translation>Numéro de la coupe, à partir de 1</translation>
    </message>
    <message>
        <source>What the cells are coloured by</source>
        <translation>D&apos;après quoi les mailles sont colorées</translation>
    </message>
    <message>
        <source>&amp;Colour by</source>
        <translation>&amp;Colorer par</translation>
    </message>
    <message>
        <source>of %1</source>
        <translation>sur %1</translation>
    </message>
    <message>
        <source>unit</source>
        <translation>unité</translation>
    </message>
    <message>
        <source>one colour</source>
        <translation>une couleur</translation>
    </message>
</context>
<context>
    <name>lodex::SectionView</name>
    <message>
        <source>Cross-section of the selected grid</source>
        <translation>Coupe de la grille choisie</translation>
    </message>
    <message>
        <source>%1: %2 section %3 of %4, vertical exaggeration %5</source>
        <translation>%1 : coupe %2 %3 sur %4, exagération verticale %5</translation>
    </message>
    <message>
        <source>Cell I %1, J %2, K %3</source>
        <translation>Maille I %1, J %2, K %3</translation>
    </message>
    <message>
        <source>Distance along the section</source>
        <translation>Distance le long de la coupe</translation>
    </message>
    <message>
        <source>Depth</source>
        <translation>Profondeur</translation>
    </message>
    <message>
        <source>and %1 more</source>
        <translation>et %1 de plus</translation>
    </message>
    <message>
        <source>There is no active cell in this section.</source>
        <translation>Il n&apos;y a aucune maille active dans cette coupe.</translation>
    </message>
    <message>
        <source>There is no grid yet.
Drop a model file here, or choose File, Import.</source>
        <translation>Il n&apos;y a pas encore de grille.
Déposez un fichier de modèle ici, ou choisissez Fichier, Importer.</translation>
    </message>
</context>
<context>
    <name>lodex::ShortcutsDialog</name>
    <message>
        <source>Actions and shortcuts</source>
        <translation>Actions et raccourcis</translation>
    </message>
    <message>
        <source>Find an action</source>
        <translation>Chercher une action</translation>
    </message>
    <message>
        <source>Shows only actions that hold this text</source>
        <translation>Ne montre que les actions qui contiennent ce texte</translation>
    </message>
    <message>
        <source>Every action of the menus</source>
        <translation>Toutes les actions des menus</translation>
    </message>
    <message>
        <source>Menu</source>
        <translation>Menu</translation>
    </message>
    <message>
        <source>Action</source>
        <translation>Action</translation>
    </message>
    <message>
        <source>Keys</source>
        <translation>Touches</translation>
    </message>
    <message>
        <source>What it does</source>
        <translation>Ce qu&apos;elle fait</translation>
    </message>
    <message>
        <source>Camera</source>
        <translation>Caméra</translation>
    </message>
    <message>
        <source>Turn</source>
        <translation>Tourner</translation>
    </message>
    <message>
        <source>Left button, arrow keys</source>
        <translation>Bouton gauche, flèches</translation>
    </message>
    <message>
        <source>Turns the view</source>
        <translation>Tourne la vue</translation>
    </message>
    <message>
        <source>Move</source>
        <translation>Déplacer</translation>
    </message>
    <message>
        <source>Middle button, Shift and left button</source>
        <translation>Bouton du milieu, Maj et bouton gauche</translation>
    </message>
    <message>
        <source>Moves the view</source>
        <translation>Déplace la vue</translation>
    </message>
    <message>
        <source>Nearer and farther</source>
        <translation>Plus près, plus loin</translation>
    </message>
    <message>
        <source>Wheel, right button, + and -</source>
        <translation>Molette, bouton droit, + et -</translation>
    </message>
    <message>
        <source>Comes nearer or goes away</source>
        <translation>S&apos;approche ou s&apos;éloigne</translation>
    </message>
    <message>
        <source>Show everything</source>
        <translation>Tout montrer</translation>
    </message>
    <message>
        <source>Home</source>
        <translation>Début</translation>
    </message>
    <message>
        <source>Brings the whole grid into view</source>
        <translation>Amène toute la grille dans la vue</translation>
    </message>
    <message>
        <source>Pick</source>
        <translation>Pointer</translation>
    </message>
    <message>
        <source>Click</source>
        <translation>Clic</translation>
    </message>
    <message>
        <source>Shows the cell, or hands it to the dialog that waits for one</source>
        <translation>Montre la maille, ou la donne à la fenêtre qui en attend une</translation>
    </message>
    <message>
        <source>Turn about a cell</source>
        <translation>Tourner autour d&apos;une maille</translation>
    </message>
    <message>
        <source>Double click</source>
        <translation>Double clic</translation>
    </message>
    <message>
        <source>Puts the cell in the middle; on the legend, edits the colours</source>
        <translation>Met la maille au milieu ; sur la légende, modifie les couleurs</translation>
    </message>
    <message>
        <source>End a tool</source>
        <translation>Finir un outil</translation>
    </message>
    <message>
        <source>Esc</source>
        <translation>Échap</translation>
    </message>
    <message>
        <source>No dialog waits for a cell any more</source>
        <translation>Plus aucune fenêtre n&apos;attend de maille</translation>
    </message>
    <message>
        <source>Command line</source>
        <translation>Ligne de commande</translation>
    </message>
    <message>
        <source>Complete</source>
        <translation>Compléter</translation>
    </message>
    <message>
        <source>Tab, Ctrl+Space</source>
        <translation>Tab, Ctrl+Espace</translation>
    </message>
    <message>
        <source>Completes the word, or lists what may stand here</source>
        <translation>Complète le mot, ou liste ce qui peut se trouver ici</translation>
    </message>
    <message>
        <source>Former commands</source>
        <translation>Commandes précédentes</translation>
    </message>
    <message>
        <source>Up, Down</source>
        <translation>Haut, Bas</translation>
    </message>
    <message>
        <source>Brings back what was typed before</source>
        <translation>Ramène ce qui a été tapé avant</translation>
    </message>
    <message>
        <source>Closes this window</source>
        <translation>Ferme cette fenêtre</translation>
    </message>
</context>
</TS>
